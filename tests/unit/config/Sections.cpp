// SPDX-License-Identifier: GPL-2.0-only
#include "tests/unit/config/Sections.h"

namespace {

Import Cms(int block) {
    return [block](CConfig_Task& task, const TiXmlElement* section, DeviceParaRecord* record) {
        return task.Import_stCMS(section, record, block);
    };
}

Import Vehicle(int block) {
    return [block](CConfig_Task& task, const TiXmlElement* section, DeviceParaRecord* record) {
        return task.Import_VehicleInfo(section, record, block, false);
    };
}

Import Of(Importer importer) {
    return importer;
}

const char kReserved[] = "-/s16";
const char kCms[] = "ucFD_AddressType/u8 uiFD_IP/ip strFD_Domain/s64 usFD_Port/u16";
// The authentication code is gone, since the same element brings a new identity.
const char kVehicle[] =
    "strFD_CompanyName/s32 strFD_LicensePlate/s32 strFD_DriverName/s64 strFD_DeviceNum/s20 "
    "strFD_Phonenumber/s20 strFD_ServiceTel/s20 strFD_ProvincialId/s4 strFD_CityDomainId/s6 "
    "strFD_CarColors/s10 strFD_Authentication/n20 strFD_TerminalType/s20 strFD_TerminalID/s20 "
    "strFD_FacturerID/s20 strFD_CarVIN/s20 strFD_CarType/s20 strFD_DrivingLicense/s20";

} // namespace

const std::vector<Section>& Sections() {
    using T = CConfig_Task;
    static const std::vector<Section> sections = {
        {Of(&T::Import_stBaseInfo),
         "strFD_DeviceNo/s16/123456789012/123456789012 ucFD_TimeZone/u8 ucFD_TZAdjust/u8 "
         "ucFD_DstEnable/u8 ucFD_DstFromMon/u8 ucFD_DstFromDay/u8 ucFD_DstToMon/u8 "
         "ucFD_DstToDay/u8 "
         "ucFD_NowIsDst/u8 usFD_DstAdjust/u16 ucFD_DateStyle/u8 ucFD_GpsMode/u8 ucFD_GpsSTFlag/u8 "
         "ucFD_DiskFormatFlag/u8 usFD_SizeOf2ndPart/u16 strFD_CurTime/s24"},
        {Vehicle(0), kVehicle},
        {Vehicle(7), kVehicle},
        {Of(&T::Import_Users),
         "ucFD_PWEnableFlag/u8 strFD_NormalPasswd/s8 strFD_AdminPasswd/s8 stCustomUser[ 2 "
         "ucFD_UserStatus/u8 strFD_UserName/s16 strFD_UserPWD/s16 usFD_UserRoles/u16 ]"},
        {Of(&T::Import_stNetWorkMode),
         "ucFD_NetType/u8 ucFD_GNAuthMode/u8 ucFD_StreamType/u8 ucFD_GNEnableMode/u8 "
         "usFD_ExtFunBitFlag/u16 ucFD_EnableHR808/u8 ucFD_EnableJSIASS/u8 usFD_GPSInterval/u16"},
        {Of(&T::Import_Lan), "ucFD_DhcpEnableFlag/u8 uiFD_LocalIp/ip uiFD_NetMask/ip "
                             "uiFD_GateWay/ip strFD_Mac/s24"},
        {Of(&T::Import_GroupNo), "ucFD_Enable/u8 usFD_GroupNo/u16"},
        {Cms(7), kCms},
        {Cms(1), kCms},
        {Cms(2), kCms},
        {Of(&T::Import_stMobileGNet), "ucFD_NetType/u8 strFD_Apn/s32 strFD_PhoneNo/s24 "
                                      "strFD_UserName/s36 strFD_UserPasswd/s36"},
        {Of(&T::Import_stWifi),
         "ucFD_WorkMode/u8 strFD_SSID/s32 strFD_Passwd/s32 ucFD_AuthMode/u8 ucFD_CryptType/u8 "
         "ucFD_DhcpEnableFlag/u8 uiFD_IP/ip uiFD_GateWay/ip uiFD_NetMask/ip uiFD_DNS/ip"},
        {Of(&T::Import_stWifiAp), "strFD_SSID/s32 strFD_Passwd/s32 ucFD_AuthMode/u8 "
                                  "ucFD_CryptType/u8 ucFD_DhcpEnableFlag/u8"},
        {Of(&T::Import_stVideoMirror),
         "stVideoMirrorPara( 1 ucFD_LeftRight/u8 ucFD_UpDown/u8 ucFD_Rotate/u8 )"},
        {Of(&T::Import_VideoCrop),
         "stVideoCropPara[ 1 uiFD_X/u32 uiFD_Y/u32 uiFD_Width/u32 uiFD_Height/u32 ]"},
        {Of(&T::Import_Video),
         "ucFD_VideoMode/u8 ucFD_VEncFormat/u8 ucFD_AEncFormat/u8 stVideoPara( 1 "
         "ucFD_Resolution/u8 ucFD_Quality/u8 ucFD_FrameRate/u8 ucFD_Gop/u8 uiFD_BitRate/u32 "
         "uiFD_DisableAudio/u32 uiFD_DisableVideo/u32 uiFD_EnableROI/u32 ucFD_ROI_X/u32/300/288 "
         "ucFD_ROI_Y/u32/-31/-16 ucFD_ROI_Wight/u32/320/336 ucFD_ROI_Height/u32/40/48 )"},
        {Of(&T::Import_SubStream), "ucFD_EncodeMode/u8 ucFD_Resolution/u8 ucFD_Quality/u8 "
                                   "ucFD_FrameRate/u8 uiFD_BitRate/u32"},
        {Of(&T::Import_Osd),
         "ucFD_DeviceNoEnable/u8 ucFD_ChnNameEnable/u8 ucFD_TimeEnable/u8 ucFD_GPSEnable/u8 "
         "ucFD_LPlateEnable/u8 -/u8 ucFD_SpeedEnable/u8 ucFD_TempEnable/u8 ucFD_IOEnable/u8 "
         "ucFD_GSensorEnable/u8 ucFD_BatteryEnable/u8"},
        {Of(&T::Import_ChnOsd),
         "stChnOSDPara( 1 ucFD_Resolution/s14 ucDisplayStyle/u8 ucPreviewEnable/u8 )"},
        {Of(&T::Import_Record),
         "ucFD_RecordMode/u8 ucFD_SDUsage/u8 ucFD_AutoCoverEnable/u8 ucFD_AlarmRecordType/u8 "
         "uiFD_PreRecordTime/u32 uiFD_AlarmRecordTime/u32 uiFD_AlarmRecordDays/u32"},
        {Of(&T::Import_ChnRecord),
         "stChnRecordPara( 1 ucRecordEnable/u8 ucHaveAudio/u8 ucSubStream/u8 )"},
        {Of(&T::Import_Snapshot),
         "ucFD_SaveDays/u8 ucFD_MultiSnapEnable/u8 uiFD_Interval/u32 ucFD_SnapCount/u8"},
        {Of(&T::Import_stDisplay),
         "ucFD_AutoEnable/u8 ucFD_LcdTimeout/u8 usFD_GuiTimeout/u16 strLanguage/s4 ucFD_WinMax/u8 "
         "ucFD_WinNum/u8 ucFD_VideoOutMode/u8 ucFD_VideoOutRes/u8"},
        {Of(&T::Import_AccessExport),
         "ucFD_PasswdEnable/u8 ucFD_WorkMode/u8 ucFD_ExportEnable/u8 ucFD_ExportLimit/u8"},
        {Of(&T::Import_SerialChn), "stSerialChnPara( 1 ucFD_DataMode/u8 uiBaudRate/u32 "
                                   "ucDataBit/u8 ucParity/u8 ucStopBit/u8 ucCount/u8 )"},
        {nullptr, kReserved},
        {Of(&T::Import_Alarm),
         "ucDiskFaulAlarm/u8 ucDiskSpaceAlarm/u8 ucVideoLostAlarm/u8 ucSOSButtonAlarm/u8 "
         "fOxygenAlarm/f stAlarmInIO{ 12 ucIOEnable/u8 ucIONumber/u8 ucIOLevel/u8 ucIOFunc/u8 "
         "usIOLast/u16 }"},
        {nullptr, kReserved},
        {Of(&T::Import_Power),
         "ucPowerMode/u8/3/227 ucPOnDelayEnable/u8 usPOffDelayTime/u16 uiTimingPOnTime/u32 "
         "uiTimingPOffTime/u32 uiAccOffStopRecCh/u32"},
        {Of(&T::Import_TimingRecord), "stTimingRecDay[ 8 ucRT1Type/u8 ucRT2Type/u8 uiStartT1/u32 "
                                      "uiEndT1/u32 uiStartT2/u32 uiEndT2/u32 ]"},
        {Of(&T::Import_SpeedFatigue),
         "ucFD_LowSpeedIsEnable/u8 ucFD_LowSpeedUnit/u8 usFD_LowSpeed/u16 "
         "ucFD_OverSpeedIsEnable/u8 ucFD_OverSpeedUnit/u8 usFD_OverSpeed/u16 "
         "ucFD_PeakingIsEnable/u8 ucFD_TimeUnit/u8 usFD_OverTime/u16 ucFD_FatigueEnable/u8 "
         "usFD_DrivingTime/u16 usFD_RestTime/u16"},
        {Of(&T::Import_TempAlarm),
         "stTempAlarmPara{ 8 ucFD_TempType/u8 ucFD_LowTempEnable/u8 fFD_LowTemp/f/-5.5/-5 "
         "ucFD_HighTempEnable/u8 fFD_HighTemp/f/70.9/70 }"},
        {Of(&T::Import_GSensor),
         "fFD_X/f fFD_XLimit/f fFD_Y/f fFD_YLimit/f fFD_Z/f fFD_ZLimit/f fFD_RAccel/f "
         "fFD_RDecel/f fFD_Crash/f fFD_Swerve/f fFD_TrunOver/f ucFD_AlarmEnable/u8"},
        {Cms(3), kCms},
        {Cms(4), kCms},
        {nullptr, kReserved},
        {Of(&T::Import_Vda),
         "stVdaPara( 1 ucFD_Enable/u8 ucFD_Wday1/u8 uiStartT1/u32 uiEndT1/u32 ucFD_Wday2/u8 "
         "uiStartT2/u32 uiEndT2/u32 ucFD_Wday3/u8 uiStartT3/u32 uiEndT3/u32 ucFD_Percent/u8 "
         "uiFD_Mask/m32 )"},
        {Of(&T::Import_ReserveData), "ucReserveData/x128"},
        {Of(&T::Import_Ipc),
         "ucFD_PureNVR/u8 ucFD_Enable/u8 ucFD_IPCNum/u8 usFD_FuncMode/u16 strFD_User/s32 "
         "strFD_Pass/s32 stChnIpc{ 1 uiFD_IP/t32 } -/u32 stFunTPeriod{ 7 ucFD_Valid/u8 "
         "strFD_Wday/u8/1010101/85 strFD_StartT/u32/08:30:15/30615 strFD_EndT/u32/23:59/86340 }"},
        {Of(&T::Import_stGB28181),
         "ucFD_Enable/u8 strFD_Manufacturer/s32 strFD_ModelName/s32 strFD_ServerIp/s32 "
         "usFD_ServerPort/u16 strFD_ServerID/s32 strFD_DeviceId/s32 usFD_DevicePort/u16 "
         "strFD_DeviceUser/s32 strFD_DevicePass/s32 ucFD_WebSEnable/u8 strFD_WebSAddr/s256 "
         "stGB28181SubID{ 1 strFD_LensId/t32 strFD_AudioInId/t32 strFD_AlarmInId/t32 }"},
        {Of(&T::Import_stVersion),
         "VideoCnt/u32 Model/s32 strMcuVer/s32 strUbootVer/s32 strKernelVer/s32 strRootfsVer/s32 "
         "strAppVer/s32 strDBVer/s32 strWifiVer/s32"},
        {Of(&T::Import_stSystemInfo),
         "GpsExist/u8 GpsPos/s64 GNetExist/u8 IMEI/s32 ATI/s64/Revision:R1&#13;&#10;OK/R1 "
         "SimExist/u8 IMSI/s64 ICCID/s64 GNetSignal/u32 GNetDail/u8 WifiExist/u8 WifiMode/u8 "
         "WifiSignal/u32 WifiDail/u8 CmsStatus/u8 JTT808Status/u8 GB28181Status/u8 Disk1Exist/u8 "
         "Disk1Size/s64 Disk2Exist/u8 Disk2Size/s64 Disk3Exist/u8 Disk3Size/s64 IO/s32 "
         "VideoCnt/u32 Model/s32 McuVer/s32 BootVer/s32 KnlVer/s32 RfsVer/s32 AppVer/s32 "
         "DBVer/s32 WifiVer/s32 ACC/u8 NetStatus/u8 CMS/ip DeviceNo/s16"},
    };
    return sections;
}
