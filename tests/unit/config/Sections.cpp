// SPDX-License-Identifier: GPL-2.0-only
#include "tests/unit/config/Sections.h"

namespace {

Import Cms(int block) {
    using namespace std::placeholders;
    return std::bind(&T::Import_stCMS, _1, _2, _3, block);
}

Import Vehicle(int block) {
    using namespace std::placeholders;
    return std::bind(&T::Import_VehicleInfo, _1, _2, _3, block, false);
}

const Section kReserved{nullptr, "-/s16"};
const char kCms[] = "ucFD_AddressType uiFD_IP/ip strFD_Domain/s64 usFD_Port";
// The authentication code is cleared, since the same element brings a new identity.
const char kVehicle[] =
    R"(strFD_CompanyName/s32 strFD_LicensePlate/s32 strFD_DriverName/s64 strFD_DeviceNum/s20
    strFD_Phonenumber/s20 strFD_ServiceTel/s20 strFD_ProvincialId/s4 strFD_CityDomainId/s6
    strFD_CarColors/s10 strFD_Authentication/n20 strFD_TerminalType/s20 strFD_TerminalID/s20
    strFD_FacturerID/s20 strFD_CarVIN/s20 strFD_CarType/s20 strFD_DrivingLicense/s20)";

} // namespace

// clang-format off
const std::vector<Section>& Sections() {
    static const std::vector<Section> sections = {
        {&T::Import_stBaseInfo, R"(strFD_DeviceNo/s16/123456789012/123456789012 ucFD_TimeZone
            ucFD_TZAdjust ucFD_DstEnable ucFD_DstFromMon ucFD_DstFromDay ucFD_DstToMon ucFD_DstToDay
            ucFD_NowIsDst usFD_DstAdjust ucFD_DateStyle ucFD_GpsMode ucFD_GpsSTFlag
            ucFD_DiskFormatFlag usFD_SizeOf2ndPart strFD_CurTime/s24)"},
        {Vehicle(0), kVehicle},
        {Vehicle(7), kVehicle},
        {&T::Import_Users, R"(ucFD_PWEnableFlag strFD_NormalPasswd/s8 strFD_AdminPasswd/s8
            stCustomUser[ 2 ucFD_UserStatus strFD_UserName/s16 strFD_UserPWD/s16 usFD_UserRoles ])"},
        {&T::Import_stNetWorkMode, R"(ucFD_NetType ucFD_GNAuthMode ucFD_StreamType ucFD_GNEnableMode
            usFD_ExtFunBitFlag ucFD_EnableHR808 ucFD_EnableJSIASS usFD_GPSInterval)"},
        {&T::Import_Lan, R"(ucFD_DhcpEnableFlag uiFD_LocalIp/ip uiFD_NetMask/ip uiFD_GateWay/ip
            strFD_Mac/s24)"},
        {&T::Import_GroupNo, "ucFD_Enable usFD_GroupNo"},
        {Cms(7), kCms},
        {Cms(1), kCms},
        {Cms(2), kCms},
        {&T::Import_stMobileGNet, R"(ucFD_NetType strFD_Apn/s32 strFD_PhoneNo/s24 strFD_UserName/s36
            strFD_UserPasswd/s36)"},
        {&T::Import_stWifi, R"(ucFD_WorkMode strFD_SSID/s32 strFD_Passwd/s32 ucFD_AuthMode
            ucFD_CryptType ucFD_DhcpEnableFlag uiFD_IP/ip uiFD_GateWay/ip uiFD_NetMask/ip
            uiFD_DNS/ip)"},
        {&T::Import_stWifiAp, R"(strFD_SSID/s32 strFD_Passwd/s32 ucFD_AuthMode ucFD_CryptType
            ucFD_DhcpEnableFlag)"},
        {&T::Import_stVideoMirror, "stVideoMirrorPara( 1 ucFD_LeftRight ucFD_UpDown ucFD_Rotate )"},
        {&T::Import_VideoCrop, "stVideoCropPara[ 1 uiFD_X uiFD_Y uiFD_Width uiFD_Height ]"},
        {&T::Import_Video, R"(ucFD_VideoMode ucFD_VEncFormat ucFD_AEncFormat stVideoPara( 1
            ucFD_Resolution ucFD_Quality ucFD_FrameRate ucFD_Gop uiFD_BitRate uiFD_DisableAudio
            uiFD_DisableVideo uiFD_EnableROI ucFD_ROI_X/u4/300/288 ucFD_ROI_Y/u4/-31/-16
            ucFD_ROI_Wight/u4/320/336 ucFD_ROI_Height/u4/40/48 ))"},
        {&T::Import_SubStream, R"(ucFD_EncodeMode ucFD_Resolution ucFD_Quality ucFD_FrameRate
            uiFD_BitRate)"},
        {&T::Import_Osd, R"(ucFD_DeviceNoEnable ucFD_ChnNameEnable ucFD_TimeEnable ucFD_GPSEnable
            ucFD_LPlateEnable -/u1 ucFD_SpeedEnable ucFD_TempEnable ucFD_IOEnable
            ucFD_GSensorEnable ucFD_BatteryEnable)"},
        {&T::Import_ChnOsd, "stChnOSDPara( 1 ucFD_Resolution/s14 ucDisplayStyle ucPreviewEnable )"},
        {&T::Import_Record, R"(ucFD_RecordMode ucFD_SDUsage ucFD_AutoCoverEnable
            ucFD_AlarmRecordType uiFD_PreRecordTime uiFD_AlarmRecordTime uiFD_AlarmRecordDays)"},
        {&T::Import_ChnRecord, "stChnRecordPara( 1 ucRecordEnable ucHaveAudio ucSubStream )"},
        {&T::Import_Snapshot, "ucFD_SaveDays ucFD_MultiSnapEnable uiFD_Interval ucFD_SnapCount"},
        {&T::Import_stDisplay, R"(ucFD_AutoEnable ucFD_LcdTimeout usFD_GuiTimeout strLanguage/s4
            ucFD_WinMax ucFD_WinNum ucFD_VideoOutMode ucFD_VideoOutRes)"},
        {&T::Import_AccessExport, R"(ucFD_PasswdEnable ucFD_WorkMode ucFD_ExportEnable
            ucFD_ExportLimit)"},
        {&T::Import_SerialChn, R"(stSerialChnPara( 1 ucFD_DataMode uiBaudRate ucDataBit ucParity
            ucStopBit ucCount ))"},
        kReserved,
        {&T::Import_Alarm, R"(ucDiskFaulAlarm ucDiskSpaceAlarm ucVideoLostAlarm ucSOSButtonAlarm
            fOxygenAlarm stAlarmInIO{ 12 ucIOEnable ucIONumber ucIOLevel ucIOFunc usIOLast })"},
        kReserved,
        {&T::Import_Power, R"(ucPowerMode/u1/3/227 ucPOnDelayEnable usPOffDelayTime uiTimingPOnTime
            uiTimingPOffTime uiAccOffStopRecCh)"},
        {&T::Import_TimingRecord, R"(stTimingRecDay[ 8 ucRT1Type ucRT2Type uiStartT1 uiEndT1
            uiStartT2 uiEndT2 ])"},
        {&T::Import_SpeedFatigue, R"(ucFD_LowSpeedIsEnable ucFD_LowSpeedUnit usFD_LowSpeed
            ucFD_OverSpeedIsEnable ucFD_OverSpeedUnit usFD_OverSpeed ucFD_PeakingIsEnable
            ucFD_TimeUnit usFD_OverTime ucFD_FatigueEnable usFD_DrivingTime usFD_RestTime)"},
        {&T::Import_TempAlarm, R"(stTempAlarmPara{ 8 ucFD_TempType ucFD_LowTempEnable
            fFD_LowTemp/f/-5.5/-5 ucFD_HighTempEnable fFD_HighTemp/f/70.9/70 })"},
        {&T::Import_GSensor, R"(fFD_X fFD_XLimit fFD_Y fFD_YLimit fFD_Z fFD_ZLimit fFD_RAccel
            fFD_RDecel fFD_Crash fFD_Swerve fFD_TrunOver ucFD_AlarmEnable)"},
        {Cms(3), kCms},
        {Cms(4), kCms},
        kReserved,
        {&T::Import_Vda, R"(stVdaPara( 1 ucFD_Enable ucFD_Wday1 uiStartT1 uiEndT1 ucFD_Wday2
            uiStartT2 uiEndT2 ucFD_Wday3 uiStartT3 uiEndT3 ucFD_Percent uiFD_Mask/m32 ))"},
        {&T::Import_ReserveData, "ucReserveData/x128"},
        {&T::Import_Ipc, R"(ucFD_PureNVR ucFD_Enable ucFD_IPCNum usFD_FuncMode strFD_User/s32
            strFD_Pass/s32 stChnIpc{ 1 uiFD_IP/t32 } -/u4 stFunTPeriod{ 7 ucFD_Valid
            strFD_Wday/u1/1010101/85 strFD_StartT/u4/08:30:15/30615 strFD_EndT/u4/23:59/86340 })"},
        {&T::Import_stGB28181, R"(ucFD_Enable strFD_Manufacturer/s32 strFD_ModelName/s32
            strFD_ServerIp/s32 usFD_ServerPort strFD_ServerID/s32 strFD_DeviceId/s32
            usFD_DevicePort strFD_DeviceUser/s32 strFD_DevicePass/s32 ucFD_WebSEnable
            strFD_WebSAddr/s256
            stGB28181SubID{ 1 strFD_LensId/t32 strFD_AudioInId/t32 strFD_AlarmInId/t32 })"},
        {&T::Import_stVersion, R"(VideoCnt/u4 Model/s32 strMcuVer/s32 strUbootVer/s32
            strKernelVer/s32 strRootfsVer/s32 strAppVer/s32 strDBVer/s32 strWifiVer/s32)"},
        {&T::Import_stSystemInfo, R"(GpsExist/u1 GpsPos/s64 GNetExist/u1 IMEI/s32
            ATI/s64/Revision:R1&#13;&#10;OK/R1 SimExist/u1 IMSI/s64 ICCID/s64 GNetSignal/u4
            GNetDail/u1 WifiExist/u1 WifiMode/u1 WifiSignal/u4 WifiDail/u1 CmsStatus/u1
            JTT808Status/u1 GB28181Status/u1 Disk1Exist/u1 Disk1Size/s64 Disk2Exist/u1
            Disk2Size/s64 Disk3Exist/u1 Disk3Size/s64 IO/s32 VideoCnt/u4 Model/s32 McuVer/s32
            BootVer/s32 KnlVer/s32 RfsVer/s32 AppVer/s32 DBVer/s32 WifiVer/s32 ACC/u1 NetStatus/u1
            CMS/ip DeviceNo/s16)"},
    };
    return sections;
}
