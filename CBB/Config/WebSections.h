// SPDX-License-Identifier: GPL-2.0-only
// The parameter sections that the web pages read. A field bears the name of the XML attribute that
// fills it. Texts are NUL-terminated where nothing else is said; addresses are IPv4 in network
// byte order. Order and widths are shared with the recorder's other programs.
#pragma once

#include <cstddef>
#include <cstdint>

struct BaseInfoPara {
    char strFD_DeviceNo[16];
    uint8_t ucFD_TimeZone;
    uint8_t ucFD_TZAdjust;
    uint8_t ucFD_DstEnable;
    uint8_t ucFD_DstFromMon;
    uint8_t ucFD_DstFromDay;
    uint8_t ucFD_DstToMon;
    uint8_t ucFD_DstToDay;
    uint8_t ucFD_NowIsDst;
    uint16_t usFD_DstAdjust;
    uint8_t ucFD_DateStyle;
    uint8_t ucFD_GpsMode;
    uint8_t ucFD_GpsSTFlag;
    uint8_t ucFD_DiskFormatFlag;
    uint16_t usFD_SizeOf2ndPart;
    char strFD_CurTime[24]; // the recorder's clock, as it writes it
};
static_assert(sizeof(BaseInfoPara) == 56);

struct DisplayPara {
    uint8_t ucFD_AutoEnable;
    uint8_t ucFD_LcdTimeout;
    uint16_t usFD_GuiTimeout;
    char strLanguage[4];
    uint8_t ucFD_WinMax;
    uint8_t ucFD_WinNum;
    uint8_t ucFD_VideoOutMode;
    uint8_t ucFD_VideoOutRes;
};

struct VideoMirrorPara {
    uint8_t ucFD_LeftRight;
    uint8_t ucFD_UpDown;
    uint8_t ucFD_Rotate;
};

struct NetWorkModePara {
    uint8_t ucFD_NetType;
    uint8_t ucFD_GNAuthMode;
    uint8_t ucFD_StreamType;
    uint8_t ucFD_GNEnableMode;
    uint16_t usFD_ExtFunBitFlag;
    uint8_t ucFD_EnableHR808;
    uint8_t ucFD_EnableJSIASS;
    uint16_t usFD_GPSInterval;
};

struct CmsPara {
    uint8_t ucFD_AddressType; // 0: the server is uiFD_IP; otherwise strFD_Domain
    uint32_t uiFD_IP;
    char strFD_Domain[64];
    uint16_t usFD_Port;
};
static_assert(sizeof(CmsPara) == 76);

struct MobileGNetPara {
    uint8_t ucFD_NetType;
    char strFD_Apn[32];
    char strFD_PhoneNo[24];
    char strFD_UserName[36];
    char strFD_UserPasswd[36];
};

struct WifiPara {
    uint8_t ucFD_WorkMode;
    char strFD_SSID[32];
    char strFD_Passwd[32];
    uint8_t ucFD_AuthMode;
    uint8_t ucFD_CryptType;
    uint8_t ucFD_DhcpEnableFlag;
    uint32_t uiFD_IP;
    uint32_t uiFD_GateWay;
    uint32_t uiFD_NetMask;
    uint32_t uiFD_DNS;
};
static_assert(sizeof(WifiPara) == 84);

struct WifiApPara {
    char strFD_SSID[32];
    char strFD_Passwd[32];
    uint8_t ucFD_AuthMode;
    uint8_t ucFD_CryptType;
    uint8_t ucFD_DhcpEnableFlag;
};

// Identifiers have up to 32 characters: one of exactly 32 has no terminating NUL.
struct GB28181SubIDPara {
    char strFD_LensId[32];
    char strFD_AudioInId[32];
    char strFD_AlarmInId[32];
};

struct GB28181Para {
    uint8_t ucFD_Enable;
    char strFD_Manufacturer[32];
    char strFD_ModelName[32];
    char strFD_ServerIp[32];
    uint16_t usFD_ServerPort;
    char strFD_ServerID[32];
    char strFD_DeviceId[32];
    uint16_t usFD_DevicePort;
    char strFD_DeviceUser[32];
    char strFD_DevicePass[32];
    uint8_t ucFD_WebSEnable;
    char strFD_WebSAddr[256];
    GB28181SubIDPara stGB28181SubID[1];
};
static_assert(sizeof(GB28181Para) == 584);

struct VersionPara {
    uint32_t VideoCnt;
    char Model[32];
    char strMcuVer[32];
    char strUbootVer[32];
    char strKernelVer[32];
    char strRootfsVer[32];
    char strAppVer[32];
    char strDBVer[32];
    char strWifiVer[32];
};
static_assert(sizeof(VersionPara) == 260 && offsetof(VersionPara, VideoCnt) == 0);

struct SystemInfoPara {
    uint8_t GpsExist;
    char GpsPos[64];
    uint8_t GNetExist;
    char IMEI[32];
    char ATI[64]; // the module's revision alone, taken out of its whole answer
    uint8_t SimExist;
    char IMSI[64];
    char ICCID[64];
    uint32_t GNetSignal;
    uint8_t GNetDail;
    uint8_t WifiExist;
    uint8_t WifiMode;
    uint32_t WifiSignal;
    uint8_t WifiDail;
    uint8_t CmsStatus;
    uint8_t JTT808Status;
    uint8_t GB28181Status;
    uint8_t Disk1Exist;
    char Disk1Size[64];
    uint8_t Disk2Exist;
    char Disk2Size[64];
    uint8_t Disk3Exist;
    char Disk3Size[64];
    char IO[32];
    uint32_t VideoCnt;
    char Model[32];
    char McuVer[32];
    char BootVer[32];
    char KnlVer[32];
    char RfsVer[32];
    char AppVer[32];
    char DBVer[32];
    char WifiVer[32];
    uint8_t ACC;
    uint8_t NetStatus;
    uint32_t CMS;
    char DeviceNo[16];
};
static_assert(sizeof(SystemInfoPara) == 820);
