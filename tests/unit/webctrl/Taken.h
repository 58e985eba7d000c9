// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include "CBB/Util/Owner.h"
#include "tests/unit/Unit.h"

// A socket bound to this port, which nobody else can then bind.
class Taken : public CDescriptor {
public:
    Taken(int type, uint16_t port) : CDescriptor(socket(AF_INET, type, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        EXPECT_EQ(bind(Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        EXPECT_TRUE(type == SOCK_DGRAM || listen(Get(), 1) == 0);
    }
};
