// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "CBB/Util/Owner.h"

inline sockaddr_in Loopback(int port) {
    return {AF_INET, htons(static_cast<uint16_t>(port)), {htonl(INADDR_LOOPBACK)}, {}};
}

// A socket bound to this port of 127.0.0.1, which nobody else can then bind for all addresses.
class Taken : public CDescriptor {
public:
    Taken(int type, int port) : CDescriptor(socket(AF_INET, type, 0)) {
        const sockaddr_in address = Loopback(port);
        EXPECT_EQ(bind(Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
        EXPECT_TRUE(type == SOCK_DGRAM || listen(Get(), 1) == 0);
    }
};
