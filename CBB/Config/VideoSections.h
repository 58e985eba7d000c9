// SPDX-License-Identifier: GPL-2.0-only
// The parameter sections that no web page reads. Naming and texts as in WebSections.h.
#pragma once

#include <cstdint>

struct VehicleInfoPara {
    char strFD_CompanyName[32];
    char strFD_LicensePlate[32];
    char strFD_DriverName[64];
    char strFD_DeviceNum[20];
    char strFD_Phonenumber[20];
    char strFD_ServiceTel[20];
    char strFD_ProvincialId[4];
    char strFD_CityDomainId[6];
    char strFD_CarColors[10];
    char strFD_Authentication[20]; // JT/T 808 code, void once the vehicle's identity changes
    char strFD_TerminalType[20];
    char strFD_TerminalID[20];
    char strFD_FacturerID[20];
    char strFD_CarVIN[20];
    char strFD_CarType[20];
    char strFD_DrivingLicense[20];
};

struct CustomUserPara {
    std::uint8_t ucFD_UserStatus;
    char strFD_UserName[16];
    char strFD_UserPWD[16];
    std::uint16_t usFD_UserRoles;
};

struct UsersPara {
    std::uint8_t ucFD_PWEnableFlag;
    char strFD_NormalPasswd[8];
    char strFD_AdminPasswd[8];
    CustomUserPara stCustomUser[2];
};

struct LanPara {
    std::uint8_t ucFD_DhcpEnableFlag;
    std::uint32_t uiFD_LocalIp;
    std::uint32_t uiFD_NetMask;
    std::uint32_t uiFD_GateWay;
    char strFD_Mac[24];
};

struct GroupNoPara {
    std::uint8_t ucFD_Enable;
    std::uint16_t usFD_GroupNo;
};

struct VideoCropPara {
    std::uint32_t uiFD_X;
    std::uint32_t uiFD_Y;
    std::uint32_t uiFD_Width;
    std::uint32_t uiFD_Height;
};

struct VideoChnPara {
    std::uint8_t ucFD_Resolution;
    std::uint8_t ucFD_Quality;
    std::uint8_t ucFD_FrameRate;
    std::uint8_t ucFD_Gop;
    std::uint32_t uiFD_BitRate;
    std::uint32_t uiFD_DisableAudio;
    std::uint32_t uiFD_DisableVideo;
    std::uint32_t uiFD_EnableROI;
    std::uint32_t ucFD_ROI_X; // the region of interest, in whole 16-pixel blocks of the encoder
    std::uint32_t ucFD_ROI_Y;
    std::uint32_t ucFD_ROI_Wight;
    std::uint32_t ucFD_ROI_Height;
};

struct VideoPara {
    std::uint8_t ucFD_VideoMode;
    std::uint8_t ucFD_VEncFormat;
    std::uint8_t ucFD_AEncFormat;
    VideoChnPara stVideoPara[1];
};

struct SubStreamPara {
    std::uint8_t ucFD_EncodeMode;
    std::uint8_t ucFD_Resolution;
    std::uint8_t ucFD_Quality;
    std::uint8_t ucFD_FrameRate;
    std::uint32_t uiFD_BitRate;
};

struct OsdPara {
    std::uint8_t ucFD_DeviceNoEnable;
    std::uint8_t ucFD_ChnNameEnable;
    std::uint8_t ucFD_TimeEnable;
    std::uint8_t ucFD_GPSEnable;
    std::uint8_t ucFD_LPlateEnable;
    std::uint8_t ucReserved; // a switch that no attribute carries
    std::uint8_t ucFD_SpeedEnable;
    std::uint8_t ucFD_TempEnable;
    std::uint8_t ucFD_IOEnable;
    std::uint8_t ucFD_GSensorEnable;
    std::uint8_t ucFD_BatteryEnable;
};

struct ChnOsdPara {
    char ucFD_Resolution[14]; // a text, whatever the attribute's name suggests
    std::uint8_t ucDisplayStyle;
    std::uint8_t ucPreviewEnable;
};

struct RecordPara {
    std::uint8_t ucFD_RecordMode;
    std::uint8_t ucFD_SDUsage;
    std::uint8_t ucFD_AutoCoverEnable;
    std::uint8_t ucFD_AlarmRecordType;
    std::uint32_t uiFD_PreRecordTime;
    std::uint32_t uiFD_AlarmRecordTime;
    std::uint32_t uiFD_AlarmRecordDays;
};

struct ChnRecordPara {
    std::uint8_t ucRecordEnable;
    std::uint8_t ucHaveAudio;
    std::uint8_t ucSubStream;
};

struct SnapshotPara {
    std::uint8_t ucFD_SaveDays;
    std::uint8_t ucFD_MultiSnapEnable;
    std::uint32_t uiFD_Interval;
    std::uint8_t ucFD_SnapCount;
};

struct AccessExportPara {
    std::uint8_t ucFD_PasswdEnable;
    std::uint8_t ucFD_WorkMode;
    std::uint8_t ucFD_ExportEnable;
    std::uint8_t ucFD_ExportLimit;
};

struct SerialChnPara {
    std::uint8_t ucFD_DataMode;
    std::uint32_t uiBaudRate;
    std::uint8_t ucDataBit;
    std::uint8_t ucParity;
    std::uint8_t ucStopBit;
    std::uint8_t ucCount;
};

struct AlarmInPara {
    std::uint8_t ucIOEnable;
    std::uint8_t ucIONumber;
    std::uint8_t ucIOLevel;
    std::uint8_t ucIOFunc;
    std::uint16_t usIOLast;
};

struct AlarmPara {
    std::uint8_t ucDiskFaulAlarm;
    std::uint8_t ucDiskSpaceAlarm;
    std::uint8_t ucVideoLostAlarm;
    std::uint8_t ucSOSButtonAlarm;
    float fOxygenAlarm;
    AlarmInPara stAlarmInIO[12];
};

struct PowerPara {
    std::uint8_t ucPowerMode; // bits 0 to 4 the mode, bits 5, 6 and 7 one flag each
    std::uint8_t ucPOnDelayEnable;
    std::uint16_t usPOffDelayTime;
    std::uint32_t uiTimingPOnTime;
    std::uint32_t uiTimingPOffTime;
    std::uint32_t uiAccOffStopRecCh;
};

struct TimingRecDayPara {
    std::uint8_t ucRT1Type;
    std::uint8_t ucRT2Type;
    std::uint32_t uiStartT1;
    std::uint32_t uiEndT1;
    std::uint32_t uiStartT2;
    std::uint32_t uiEndT2;
};

struct SpeedFatiguePara {
    std::uint8_t ucFD_LowSpeedIsEnable;
    std::uint8_t ucFD_LowSpeedUnit;
    std::uint16_t usFD_LowSpeed;
    std::uint8_t ucFD_OverSpeedIsEnable;
    std::uint8_t ucFD_OverSpeedUnit;
    std::uint16_t usFD_OverSpeed;
    std::uint8_t ucFD_PeakingIsEnable;
    std::uint8_t ucFD_TimeUnit;
    std::uint16_t usFD_OverTime;
    std::uint8_t ucFD_FatigueEnable;
    std::uint16_t usFD_DrivingTime;
    std::uint16_t usFD_RestTime;
};

struct TempAlarmPara {
    std::uint8_t ucFD_TempType;
    std::uint8_t ucFD_LowTempEnable;
    float fFD_LowTemp; // whole degrees
    std::uint8_t ucFD_HighTempEnable;
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
    std::uint8_t ucFD_AlarmEnable;
};

struct VdaPara {
    std::uint8_t ucFD_Enable;
    std::uint8_t ucFD_Wday1;
    std::uint32_t uiStartT1;
    std::uint32_t uiEndT1;
    std::uint8_t ucFD_Wday2;
    std::uint32_t uiStartT2;
    std::uint32_t uiEndT2;
    std::uint8_t ucFD_Wday3;
    std::uint32_t uiStartT3;
    std::uint32_t uiEndT3;
    std::uint8_t ucFD_Percent;
    std::uint32_t uiFD_Mask[32];
};

struct ReserveDataPara {
    std::uint8_t ucReserveData[128];
};

struct ChnIpcPara {
    char uiFD_IP[32]; // a text of up to 32 characters: one of exactly 32 has no terminating NUL
};

struct FunTPeriodPara {
    std::uint8_t ucFD_Valid;
    std::uint8_t strFD_Wday;    // bit 0 the first day
    std::uint32_t strFD_StartT; // seconds since midnight
    std::uint32_t strFD_EndT;   // seconds since midnight
};

struct IpcPara {
    std::uint8_t ucFD_PureNVR;
    std::uint8_t ucFD_Enable;
    std::uint8_t ucFD_IPCNum;
    std::uint16_t usFD_FuncMode;
    char strFD_User[32];
    char strFD_Pass[32];
    ChnIpcPara stChnIpc[1];
    std::uint32_t uiReserved;
    FunTPeriodPara stFunTPeriod[7];
};
