// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/HexDump.h"

#include <cstdio>

#include "CBB/Util/DebugPrint.h"

void HexDump(int level, const char* label, const void* data, uint32_t length) {
    if (!DebugIsShown(level) || label == nullptr || data == nullptr || length == 0)
        return;
    printf("<HEX:%s>(%d)-[", label, static_cast<int>(length));
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    for (uint32_t i = 0; i < length; ++i)
        printf("%02x ", bytes[i]);
    puts("]");
}
