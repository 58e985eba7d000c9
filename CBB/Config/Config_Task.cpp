// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Config/Config_Task.h"

#include "CBB/Config/FieldConvert.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>

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

bool IsHexadecimal(const char* text) {
    return text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && text[2] != '\0' &&
           text[2 + std::strspn(text + 2, "0123456789abcdefABCDEF")] == '\0';
}

bool IsDecimal(const char* text) {
    if (*text == '-')
        ++text;
    return text[std::strspn(text, "0123456789")] == '\0';
}

} // namespace

CConfig_Task::CConfig_Task() : m_stPara() {}

CConfig_Task::~CConfig_Task() = default;

int CConfig_Task::ParseAddress(const char* text, std::uint32_t* address) {
    if (IsDotted(text)) {
        *address = inet_addr(text);
    } else if (IsHexadecimal(text)) {
        std::uint32_t value = 0;
        for (const char* digit = text + 2; *digit; ++digit)
            value = value << 4 | static_cast<std::uint32_t>(HexDigit(*digit));
        *address = value;
    } else if (IsDecimal(text)) {
        *address = static_cast<std::uint32_t>(ToInt(text));
    } else {
        return -1;
    }
    return 0;
}
