// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Config/FieldConvert.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cfloat>
#include <cmath>
#include <cstdlib>

#include "CBB/Util/HexText.h"
#include "CBB/Util/TextFun.h"

namespace {

// Digits and exactly three dots; each number that a dot follows is at most 255, the last one is
// inet_addr's to judge.
bool IsDotted(const char* text) {
    constexpr int kTooLarge = 256;
    int dots = 0;
    int number = 0;
    for (; *text; ++text) {
        if (*text == '.') {
            if (number == kTooLarge)
                return false;
            ++dots;
            number = 0;
        } else if (*text >= '0' && *text <= '9') {
            number = std::min(number * 10 + (*text - '0'), kTooLarge);
        } else {
            return false;
        }
    }
    return dots == 3;
}

} // namespace

int Store(const char* text, uint8_t* field) {
    *field = static_cast<uint8_t>(ToInt(text));
    return 0;
}

int Store(const char* text, uint16_t* field) {
    *field = static_cast<uint16_t>(ToInt(text));
    return 0;
}

int Store(const char* text, uint32_t* field) {
    *field = static_cast<uint32_t>(ToInt(text));
    return 0;
}

int Store(const char* text, float* field) {
    const double value = strtod(text, nullptr);
    *field = std::isnan(value)
                 ? 0.0F
                 : static_cast<float>(std::clamp(
                       value, -static_cast<double>(FLT_MAX), static_cast<double>(FLT_MAX)));
    return 0;
}

int ParseAddress(const char* text, uint32_t* address) {
    if (IsDotted(text)) {
        *address = inet_addr(text);
    } else if (IsHexText(text)) {
        int number = 0;
        HexTextToInt(text + 2, static_cast<int>(strlen(text + 2)), &number);
        *address = static_cast<uint32_t>(number);
    } else if (IsIntegerText(text)) {
        *address = static_cast<uint32_t>(ToInt(text));
    } else {
        return -1;
    }
    return 0;
}

int StoreAddress(const char* text, uint32_t* field) {
    ParseAddress(text, field);
    return 0;
}
