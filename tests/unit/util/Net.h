// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// What the tests of the network tools share.

#include "CBB/Util/NetTool.h"
#include "tests/unit/Unit.h"

inline uint32_t Ip(const char* dotted) {
    return inet_addr(dotted);
}

// "RESULT ADDRESS" of a getter, the address being 0.0.0.7 before.
inline std::string Found(int (*get)(const char*, uint32_t*), const char* name) {
    uint32_t addr = Ip("0.0.0.7");
    const int result = get(name, &addr);
    return std::to_string(result) + " " + inet_ntoa({addr});
}
