// SPDX-License-Identifier: GPL-2.0-only
#include "tests/unit/config/Sections.h"

using T = Task;

template <typename... Each>
static std::vector<Import> List(Each... importers) {
    return {importers...};
}

const std::vector<Import> kImporters =
    List(&T::Import_stBaseInfo, &T::Vehicle<0, false>, &T::Vehicle<7, false>, &T::Import_Users,
         &T::Import_stNetWorkMode, &T::Import_Lan, &T::Import_GroupNo, &T::Cms<7>, &T::Cms<1>,
         &T::Cms<2>, &T::Import_stMobileGNet, &T::Import_stWifi, &T::Import_stWifiAp,
         &T::Import_stVideoMirror, &T::Import_VideoCrop, &T::Import_Video, &T::Import_SubStream,
         &T::Import_Osd, &T::Import_ChnOsd, &T::Import_Record, &T::Import_ChnRecord,
         &T::Import_Snapshot, &T::Import_stDisplay, &T::Import_AccessExport, &T::Import_SerialChn,
         nullptr, &T::Import_Alarm, nullptr, &T::Import_Power, &T::Import_TimingRecord,
         &T::Import_SpeedFatigue, &T::Import_TempAlarm, &T::Import_GSensor, &T::Cms<3>, &T::Cms<4>,
         nullptr, &T::Import_Vda, &T::Import_ReserveData, &T::Import_Ipc, &T::Import_stGB28181,
         &T::Import_stVersion, &T::Import_stSystemInfo);
