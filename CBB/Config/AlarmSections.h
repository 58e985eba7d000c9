// SPDX-License-Identifier: GPL-2.0-only
// Alarms, timed recording, speed, temperature and the G-sensor. Naming and texts as in
// WebSections.h.
#pragma once

#include <cstdint>

struct AlarmInPara {
    uint8_t ucIOEnable;
    uint8_t ucIONumber;
    uint8_t ucIOLevel;
    uint8_t ucIOFunc;
    uint16_t usIOLast;
};

struct AlarmPara {
    uint8_t ucDiskFaulAlarm;
    uint8_t ucDiskSpaceAlarm;
    uint8_t ucVideoLostAlarm;
    uint8_t ucSOSButtonAlarm;
    float fOxygenAlarm;
    AlarmInPara stAlarmInIO[12];
};

struct TimingRecDayPara {
    uint8_t ucRT1Type;
    uint8_t ucRT2Type;
    uint32_t uiStartT1;
    uint32_t uiEndT1;
    uint32_t uiStartT2;
    uint32_t uiEndT2;
};

struct SpeedFatiguePara {
    uint8_t ucFD_LowSpeedIsEnable;
    uint8_t ucFD_LowSpeedUnit;
    uint16_t usFD_LowSpeed;
    uint8_t ucFD_OverSpeedIsEnable;
    uint8_t ucFD_OverSpeedUnit;
    uint16_t usFD_OverSpeed;
    uint8_t ucFD_PeakingIsEnable;
    uint8_t ucFD_TimeUnit;
    uint16_t usFD_OverTime;
    uint8_t ucFD_FatigueEnable;
    uint16_t usFD_DrivingTime;
    uint16_t usFD_RestTime;
};

struct TempAlarmPara {
    uint8_t ucFD_TempType;
    uint8_t ucFD_LowTempEnable;
    float fFD_LowTemp; // whole degrees
    uint8_t ucFD_HighTempEnable;
    float fFD_HighTemp; // whole degrees
};

struct GSensorPara {
    float fFD_X;
    float fFD_XLimit;
    float fFD_Y;
    float fFD_YLimit;
    float fFD_Z;
    float fFD_ZLimit;
    float fFD_RAccel;
    float fFD_RDecel;
    float fFD_Crash;
    float fFD_Swerve;
    float fFD_TrunOver;
    uint8_t ucFD_AlarmEnable;
};
