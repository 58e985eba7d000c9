// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/HexText.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int kNotHex = -1;

int Nibble(char c) {
    static const char digits[] = "0123456789abcdefABCDEF";
    const char* found = c != '\0' ? strchr(digits, c) : nullptr;
    if (found == nullptr)
        return kNotHex;
    const int index = static_cast<int>(found - digits);
    return index < 16 ? index : index - 6;
}

// The byte whose high digit stands at text[at].
int Pair(const char* text, int length, int at) {
    const int high = Nibble(text[at]);
    if (high == kNotHex)
        return kNotHex;
    const int low = at + 1 < length ? Nibble(text[at + 1]) : 0;
    return low == kNotHex ? kNotHex : high << 4 | low;
}

} // namespace

int HexTextToBytes(const char* text, int length, uint8_t* bytes, int* capacity) {
    if (length <= 0) {
        *capacity = 0;
        return 0;
    }
    if (*capacity < length / 2)
        return -1;
    const int count = (length - 1) / 2 + 1;
    const int room = std::min(count, *capacity);
    for (int i = 0; i < count; ++i) {
        const int byte = Pair(text, length, 2 * i);
        if (byte == kNotHex)
            return -1;
        if (i < room)
            bytes[i] = static_cast<uint8_t>(byte);
    }
    *capacity = room;
    return 0;
}

int HexTextToInt(const char* text, int length, int* value) {
    uint32_t sum = 0;
    int rc = 0;
    for (int i = 0; i < length; ++i) {
        const int digit = Nibble(text[i]);
        if (digit == kNotHex) {
            rc = -1;
            break;
        }
        const int remaining = length - 1 - i;
        if (remaining < 8)
            sum += static_cast<uint32_t>(digit) << (4 * remaining);
    }
    *value = static_cast<int>(sum);
    return rc;
}

int HexPairsToBytes(uint8_t* bytes, const char* text, int length) {
    int count = 0;
    for (int at = 0; at < length; at += 2) {
        const int byte = Pair(text, length, at);
        if (byte == kNotHex)
            break;
        bytes[count++] = static_cast<uint8_t>(byte);
    }
    return count;
}
