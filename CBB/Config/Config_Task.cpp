// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Config/Config_Task.h"

#include "CBB/Config/FieldConvert.h"
#include "CBB/Util/HexText.h"

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

bool ReadHexadecimal(const char* text, int* value) {
    if (text[0] != '0' || (text[1] != 'x' && text[1] != 'X') || text[2] == '\0')
        return false;
    const char* digits = text + 2;
    return HexTextToInt(digits, static_cast<int>(std::strlen(digits)), value) == 0;
}

bool IsDecimal(const char* text) {
    if (*text == '-')
        ++text;
    return text[std::strspn(text, "0123456789")] == '\0';
}

} // namespace

CConfig_Task::CConfig_Task() : m_stPara() {}

CConfig_Task::~CConfig_Task() = default;

KvTable* CConfig_Task::BufPool(std::size_t index) {
    if (!m_stBufPool[index])
        m_stBufPool[index].reset(KvCreate());
    return m_stBufPool[index].get();
}

MutexHandle CConfig_Task::Mutex(std::size_t index) {
    if (!m_hMutex[index])
        m_hMutex[index].reset(MutexCreate());
    return m_hMutex[index].get();
}

int CConfig_Task::ParseAddress(const char* text, std::uint32_t* address) {
    int number = 0;
    if (IsDotted(text))
        *address = inet_addr(text);
    else if (ReadHexadecimal(text, &number))
        *address = static_cast<std::uint32_t>(number);
    else if (IsDecimal(text))
        *address = static_cast<std::uint32_t>(ToInt(text));
    else
        return -1;
    return 0;
}
