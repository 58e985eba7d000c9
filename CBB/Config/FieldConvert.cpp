// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Config/FieldConvert.h"

#include "CBB/Config/Config_Task.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>

int ToInt(const char* text) {
    // Nearly every value is a few digits, which strtol takes long for: it knows locales.
    constexpr int kSafeDigits = 9;
    int value = 0;
    int digits = 0;
    for (; digits < kSafeDigits && text[digits] >= '0' && text[digits] <= '9'; ++digits)
        value = value * 10 + (text[digits] - '0');
    if (digits > 0 && digits < kSafeDigits)
        return value;
    return static_cast<int>(std::strtol(text, nullptr, 10));
}

int Store(const char* text, std::uint8_t* field) {
    *field = static_cast<std::uint8_t>(ToInt(text));
    return 0;
}

int Store(const char* text, std::uint16_t* field) {
    *field = static_cast<std::uint16_t>(ToInt(text));
    return 0;
}

int Store(const char* text, std::uint32_t* field) {
    *field = static_cast<std::uint32_t>(ToInt(text));
    return 0;
}

int Store(const char* text, float* field) {
    const double value = std::strtod(text, nullptr);
    *field = std::isnan(value)
                 ? 0.0F
                 : static_cast<float>(std::clamp(
                       value, -static_cast<double>(FLT_MAX), static_cast<double>(FLT_MAX)));
    return 0;
}

int StoreAddress(const char* text, std::uint32_t* field) {
    CConfig_Task::ParseAddress(text, field);
    return 0;
}
