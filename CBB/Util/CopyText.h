// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

// Copies into a fixed field, cut to its size less one and always terminated.
template <size_t N>
void CopyText(char (&field)[N], std::string_view text) {
    const size_t length = std::min(text.size(), N - 1);
    memcpy(field, text.data(), length);
    field[length] = '\0';
}
