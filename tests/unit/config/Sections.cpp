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

} // namespace

// clang-format off
const std::vector<Import>& Importers() {
    static const std::vector<Import> importers = {
        &T::Import_stBaseInfo, Vehicle(0), Vehicle(7), &T::Import_Users,
        &T::Import_stNetWorkMode, &T::Import_Lan, &T::Import_GroupNo, Cms(7), Cms(1),
        Cms(2), &T::Import_stMobileGNet, &T::Import_stWifi, &T::Import_stWifiAp,
        &T::Import_stVideoMirror, &T::Import_VideoCrop, &T::Import_Video,
        &T::Import_SubStream, &T::Import_Osd, &T::Import_ChnOsd, &T::Import_Record,
        &T::Import_ChnRecord, &T::Import_Snapshot, &T::Import_stDisplay,
        &T::Import_AccessExport, &T::Import_SerialChn, nullptr, &T::Import_Alarm, nullptr,
        &T::Import_Power, &T::Import_TimingRecord, &T::Import_SpeedFatigue,
        &T::Import_TempAlarm, &T::Import_GSensor, Cms(3), Cms(4), nullptr, &T::Import_Vda,
        &T::Import_ReserveData, &T::Import_Ipc, &T::Import_stGB28181, &T::Import_stVersion,
        &T::Import_stSystemInfo,
    };
    return importers;
}
