// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

// Whether all bytes are printable ASCII, blanks included, as nearly every text is. Eight bytes are
// looked at at once.
inline bool IsPlainText(std::string_view text) {
    constexpr uint64_t kOnes = 0x0101010101010101;
    constexpr uint64_t kHighBits = 0x80 * kOnes;
    uint64_t found = 0; // the high bit of each byte that is below 0x20, 0x7F or above
    for (; text.size() >= sizeof(found); text.remove_prefix(sizeof(found))) {
        uint64_t bytes;
        memcpy(&bytes, text.data(), sizeof(bytes));
        found |= (bytes - 0x20 * kOnes) | (bytes + kOnes) | bytes;
    }
    bool plain = (found & kHighBits) == 0;
    for (const char byte : text)
        plain = plain && static_cast<unsigned char>(byte - 0x20) < 0x7F - 0x20;
    return plain;
}
