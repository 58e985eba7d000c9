// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Config/Config_Task.h"

#include "CBB/Config/FieldConvert.h"
#include "CBB/Util/HexText.h"
#include "CBB/Util/TextFun.h"

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
    if (IsDotted(text)) {
        *address = inet_addr(text);
    } else if (IsHexText(text)) {
        int number = 0;
        HexTextToInt(text + 2, static_cast<int>(std::strlen(text + 2)), &number);
        *address = static_cast<std::uint32_t>(number);
    } else if (IsIntegerText(text)) {
        *address = static_cast<std::uint32_t>(ToInt(text));
    } else {
        return -1;
    }
    return 0;
}
