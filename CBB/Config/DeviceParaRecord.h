// SPDX-License-Identifier: GPL-2.0-only
// Every parameter section of the recorder in one flat, plain record.
#pragma once

#include <type_traits>

#include "CBB/Config/AlarmSections.h"
#include "CBB/Config/DeviceSections.h"
#include "CBB/Config/IpcSections.h"
#include "CBB/Config/VideoSections.h"
#include "CBB/Config/WebSections.h"

// Holds the place of a section that belongs to the recorder's main application alone. Its size is
// not known here; nothing reads or fills it.
struct ReservedPara {
    uint8_t ucReserved[16];
};

struct DeviceParaRecord {
    BaseInfoPara stBaseInfo;
    VehicleInfoPara stVehicleInfo[2];
    UsersPara stUsers;
    NetWorkModePara stNetWorkMode;
    LanPara stLan;
    GroupNoPara stGroupNo;
    CmsPara stCMS[3]; // server address blocks 0 to 2
    MobileGNetPara stMobileGNet;
    WifiPara stWifi;
    WifiApPara stWifiAp;
    VideoMirrorPara stVideoMirror[1];
    VideoCropPara stVideoCrop[1];
    VideoPara stVideo;
    SubStreamPara stSubStream;
    OsdPara stOsd;
    ChnOsdPara stChnOsd[1];
    RecordPara stRecord;
    ChnRecordPara stChnRecord[1];
    SnapshotPara stSnapshot;
    DisplayPara stDisplay;
    AccessExportPara stAccessExport;
    SerialChnPara stSerialChn[1];
    ReservedPara stReserved1;
    AlarmPara stAlarm;
    ReservedPara stReserved2;
    PowerPara stPower;
    TimingRecDayPara stTimingRecDay[8];
    SpeedFatiguePara stSpeedFatigue;
    TempAlarmPara stTempAlarm[8];
    GSensorPara stGSensor;
    CmsPara stCMSExtra[2]; // server address blocks 3 and 4
    ReservedPara stReserved3;
    VdaPara stVda[1];
    ReserveDataPara stReserveData;
    IpcPara stIpc;
    GB28181Para stGB28181;
    VersionPara stVersion;
    SystemInfoPara stSystemInfo;
};
static_assert(std::is_trivial_v<DeviceParaRecord> && std::is_standard_layout_v<DeviceParaRecord>);
