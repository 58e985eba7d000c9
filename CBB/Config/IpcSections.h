// SPDX-License-Identifier: GPL-2.0-only
// IP cameras. Naming and texts as in WebSections.h.
#pragma once

#include <cstdint>

struct ChnIpcPara {
    char uiFD_IP[32]; // a text of up to 32 characters: one of exactly 32 has no terminating NUL
};

struct FunTPeriodPara {
    uint8_t ucFD_Valid;
    uint8_t strFD_Wday;    // bit 0 the first day
    uint32_t strFD_StartT; // seconds since midnight
    uint32_t strFD_EndT;   // seconds since midnight
};

struct IpcPara {
    uint8_t ucFD_PureNVR;
    uint8_t ucFD_Enable;
    uint8_t ucFD_IPCNum;
    uint16_t usFD_FuncMode;
    char strFD_User[32];
    char strFD_Pass[32];
    ChnIpcPara stChnIpc[1];
    uint32_t uiReserved;
    FunTPeriodPara stFunTPeriod[7];
};
