// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Config/Config_Task.h"

#include "CBB/Config/FieldConvert.h"

CConfig_Task::CConfig_Task() : m_stPara() {}

CConfig_Task::~CConfig_Task() = default;

KvTable* CConfig_Task::Table(size_t index) {
    if (!m_stTable[index])
        m_stTable[index].reset(KvCreate());
    return m_stTable[index].get();
}

MutexHandle CConfig_Task::Mutex(size_t index) {
    if (!m_hMutex[index])
        m_hMutex[index].reset(MutexCreate());
    return m_hMutex[index].get();
}

int CConfig_Task::ParseAddress(const char* text, uint32_t* address) {
    return ::ParseAddress(text, address);
}
