// SPDX-License-Identifier: GPL-2.0-only
// The sections that the web pages read.
#include "CBB/Config/WebSections.h"

#include <algorithm>
#include <cstring>

#include "CBB/Config/Config_Task.h"
#include "CBB/Config/FieldTable.h"
#include "CBB/Util/Console.h"
#include "CBB/Util/Printable.h"

namespace {

constexpr size_t kDeviceNoShortest = 5;
constexpr size_t kDeviceNoLongest = 12;

int StoreDeviceNo(const char* text, char (*field)[16]) {
    const size_t length = strlen(text);
    if (length < kDeviceNoShortest || length > kDeviceNoLongest) {
        ConsoleWrite("CConfig_Task::Import_stBaseInfo, invalid device id:" + Printable(text) +
                     ".\n");
        return -1;
    }
    return Store(text, field);
}

// Of a modem's answer to ATI: what follows "Revision:", up to the end of that line.
int StoreRevision(const char* text, char (*field)[64]) {
    constexpr char kLabel[] = "Revision:";
    memset(*field, 0, sizeof(*field));
    const char* label = strstr(text, kLabel);
    if (!label)
        return 0;
    const char* revision = label + sizeof(kLabel) - 1;
    const char* end = strstr(revision, "\r\n");
    const size_t length = end ? static_cast<size_t>(end - revision) : sizeof(*field);
    memcpy(*field, revision, strnlen(revision, std::min(length, sizeof(*field) - 1)));
    return 0;
}

} // namespace

template <>
struct Fields<BaseInfoPara> {
    using Block = BaseInfoPara;
    static constexpr FieldRow rows[] = {
        FIELD_BY(strFD_DeviceNo, StoreDeviceNo),
        FIELD(ucFD_TimeZone),
        FIELD(ucFD_TZAdjust),
        FIELD(ucFD_DstEnable),
        FIELD(ucFD_DstFromMon),
        FIELD(ucFD_DstFromDay),
        FIELD(ucFD_DstToMon),
        FIELD(ucFD_DstToDay),
        FIELD(ucFD_NowIsDst),
        FIELD(usFD_DstAdjust),
        FIELD(ucFD_DateStyle),
        FIELD(ucFD_GpsMode),
        FIELD(ucFD_GpsSTFlag),
        FIELD(ucFD_DiskFormatFlag),
        FIELD(usFD_SizeOf2ndPart),
        FIELD(strFD_CurTime),
    };
};

int CConfig_Task::Import_stBaseInfo(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stBaseInfo);
}

template <>
struct Fields<DisplayPara> {
    using Block = DisplayPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_AutoEnable),
        FIELD(ucFD_LcdTimeout),
        FIELD(usFD_GuiTimeout),
        FIELD(strLanguage),
        FIELD(ucFD_WinMax),
        FIELD(ucFD_WinNum),
        FIELD(ucFD_VideoOutMode),
        FIELD(ucFD_VideoOutRes),
    };
};

int CConfig_Task::Import_stDisplay(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stDisplay);
}

template <>
struct Fields<VideoMirrorPara> {
    using Block = VideoMirrorPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_LeftRight),
        FIELD(ucFD_UpDown),
        FIELD(ucFD_Rotate),
    };
};

int CConfig_Task::Import_stVideoMirror(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadTable(
        section, "stVideoMirrorPara", RowIndex::OneCharacter, Target(record).stVideoMirror);
}

template <>
struct Fields<NetWorkModePara> {
    using Block = NetWorkModePara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_NetType),
        FIELD(ucFD_GNAuthMode),
        FIELD(ucFD_StreamType),
        FIELD(ucFD_GNEnableMode),
        FIELD(usFD_ExtFunBitFlag),
        FIELD(ucFD_EnableHR808),
        FIELD(ucFD_EnableJSIASS),
        FIELD(usFD_GPSInterval),
    };
};

int CConfig_Task::Import_stNetWorkMode(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stNetWorkMode);
}

template <>
struct Fields<CmsPara> {
    using Block = CmsPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_AddressType),
        FIELD_BY(uiFD_IP, StoreAddress),
        FIELD(strFD_Domain),
        FIELD(usFD_Port),
    };
};

int CConfig_Task::Import_stCMS(const TiXmlElement* section, DeviceParaRecord* record, int block) {
    DeviceParaRecord& target = Target(record);
    switch (block) {
    case 1:
    case 2:
        return ReadAttributes(section, &target.stCMS[block]);
    case 3:
    case 4:
        return ReadAttributes(section, &target.stCMSExtra[block - 3]);
    default:
        return ReadAttributes(section, &target.stCMS[0]);
    }
}

template <>
struct Fields<WifiApPara> {
    using Block = WifiApPara;
    static constexpr FieldRow rows[] = {
        FIELD(strFD_SSID),
        FIELD(strFD_Passwd),
        FIELD(ucFD_AuthMode),
        FIELD(ucFD_CryptType),
        FIELD(ucFD_DhcpEnableFlag),
    };
};

int CConfig_Task::Import_stWifiAp(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stWifiAp);
}

template <>
struct Fields<WifiPara> {
    using Block = WifiPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_WorkMode),
        FIELD(strFD_SSID),
        FIELD(strFD_Passwd),
        FIELD(ucFD_AuthMode),
        FIELD(ucFD_CryptType),
        FIELD(ucFD_DhcpEnableFlag),
        FIELD_BY(uiFD_IP, StoreAddress),
        FIELD_BY(uiFD_GateWay, StoreAddress),
        FIELD_BY(uiFD_NetMask, StoreAddress),
        FIELD_BY(uiFD_DNS, StoreAddress),
    };
};

int CConfig_Task::Import_stWifi(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stWifi);
}

template <>
struct Fields<MobileGNetPara> {
    using Block = MobileGNetPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_NetType),
        FIELD(strFD_Apn),
        FIELD(strFD_PhoneNo),
        FIELD(strFD_UserName),
        FIELD(strFD_UserPasswd),
    };
};

int CConfig_Task::Import_stMobileGNet(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stMobileGNet);
}

template <>
struct Fields<GB28181Para> {
    using Block = GB28181Para;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_Enable),
        FIELD(strFD_Manufacturer),
        FIELD(strFD_ModelName),
        FIELD(strFD_ServerIp),
        FIELD(usFD_ServerPort),
        FIELD(strFD_ServerID),
        FIELD(strFD_DeviceId),
        FIELD(usFD_DevicePort),
        FIELD(strFD_DeviceUser),
        FIELD(strFD_DevicePass),
        FIELD(ucFD_WebSEnable),
        FIELD(strFD_WebSAddr),
    };
};

template <>
struct Fields<GB28181SubIDPara> {
    using Block = GB28181SubIDPara;
    static constexpr FieldRow rows[] = {
        FIELD_BY(strFD_LensId, StoreFull),
        FIELD_BY(strFD_AudioInId, StoreFull),
        FIELD_BY(strFD_AlarmInId, StoreFull),
    };
};

int CConfig_Task::Import_stGB28181(const TiXmlElement* section, DeviceParaRecord* record) {
    GB28181Para& target = Target(record).stGB28181;
    return ReadAttributesAndTable(
        section, &target, "stGB28181SubID", RowIndex::Number, target.stGB28181SubID);
}

template <>
struct Fields<VersionPara> {
    using Block = VersionPara;
    static constexpr FieldRow rows[] = {
        FIELD(VideoCnt),
        FIELD(Model),
        FIELD(strMcuVer),
        FIELD(strUbootVer),
        FIELD(strKernelVer),
        FIELD(strRootfsVer),
        FIELD(strAppVer),
        FIELD(strDBVer),
        FIELD(strWifiVer),
    };
};

int CConfig_Task::Import_stVersion(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stVersion);
}

template <>
struct Fields<SystemInfoPara> {
    using Block = SystemInfoPara;
    static constexpr FieldRow rows[] = {
        FIELD(GpsExist),
        FIELD(GpsPos),
        FIELD(GNetExist),
        FIELD(IMEI),
        FIELD_BY(ATI, StoreRevision),
        FIELD(SimExist),
        FIELD(IMSI),
        FIELD(ICCID),
        FIELD(GNetSignal),
        FIELD(GNetDail),
        FIELD(WifiExist),
        FIELD(WifiMode),
        FIELD(WifiSignal),
        FIELD(WifiDail),
        FIELD(CmsStatus),
        FIELD(JTT808Status),
        FIELD(GB28181Status),
        FIELD(Disk1Exist),
        FIELD(Disk1Size),
        FIELD(Disk2Exist),
        FIELD(Disk2Size),
        FIELD(Disk3Exist),
        FIELD(Disk3Size),
        FIELD(IO),
        FIELD(VideoCnt),
        FIELD(Model),
        FIELD(McuVer),
        FIELD(BootVer),
        FIELD(KnlVer),
        FIELD(RfsVer),
        FIELD(AppVer),
        FIELD(DBVer),
        FIELD(WifiVer),
        FIELD(ACC),
        FIELD(NetStatus),
        FIELD_BY(CMS, StoreAddress),
        FIELD(DeviceNo),
    };
};

int CConfig_Task::Import_stSystemInfo(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stSystemInfo);
}
