// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

// Copies into a fixed field, cut to its size less one and always terminated.
template <size_t size>
void CopyText(char (&field)[size], std::string_view text) {
    const size_t length = std::min(text.size(), size - 1);
    memcpy(field, text.data(), length);
    field[length] = '\0';
}
