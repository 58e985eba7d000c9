// SPDX-License-Identifier: GPL-2.0-only
// Vehicle, users, wired network, access, serial port, power and reserve data. Naming and texts as
// in WebSections.h.
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
    uint8_t ucFD_UserStatus;
    char strFD_UserName[16];
    char strFD_UserPWD[16];
    uint16_t usFD_UserRoles;
};

struct UsersPara {
    uint8_t ucFD_PWEnableFlag;
    char strFD_NormalPasswd[8];
    char strFD_AdminPasswd[8];
    CustomUserPara stCustomUser[2];
};

struct LanPara {
    uint8_t ucFD_DhcpEnableFlag;
    uint32_t uiFD_LocalIp;
    uint32_t uiFD_NetMask;
    uint32_t uiFD_GateWay;
    char strFD_Mac[24];
};

struct GroupNoPara {
    uint8_t ucFD_Enable;
    uint16_t usFD_GroupNo;
};

struct AccessExportPara {
    uint8_t ucFD_PasswdEnable;
    uint8_t ucFD_WorkMode;
    uint8_t ucFD_ExportEnable;
    uint8_t ucFD_ExportLimit;
};

struct SerialChnPara {
    uint8_t ucFD_DataMode;
    uint32_t uiBaudRate;
    uint8_t ucDataBit;
    uint8_t ucParity;
    uint8_t ucStopBit;
    uint8_t ucCount;
};

struct PowerPara {
    uint8_t ucPowerMode; // bits 0 to 4 the mode, bits 5, 6 and 7 one flag each
    uint8_t ucPOnDelayEnable;
    uint16_t usPOffDelayTime;
    uint32_t uiTimingPOnTime;
    uint32_t uiTimingPOffTime;
    uint32_t uiAccOffStopRecCh;
};

struct ReserveDataPara {
    uint8_t ucReserveData[128];
};
