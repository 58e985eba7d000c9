// SPDX-License-Identifier: GPL-2.0-only
// Alarms, timed recording, speed, temperature and the G-sensor.
#include "CBB/Config/AlarmSections.h"

#include "CBB/Config/Config_Task.h"
#include "CBB/Config/FieldTable.h"
#include "CBB/Util/TextFun.h"

namespace {

// A fraction is dropped: -5.5 is -5.
int StoreWholeDegrees(const char* text, float* field) {
    *field = static_cast<float>(ToInt(text));
    return 0;
}

// Whatever its value, the attribute stores nothing.
int NoteRecalibration(const char* /*text*/, void* /*field*/) {
    constexpr int kRecalibrationWanted = 1;
    return kRecalibrationWanted;
}

} // namespace

template <>
struct Fields<AlarmPara> {
    using Block = AlarmPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucDiskFaulAlarm),
        FIELD(ucDiskSpaceAlarm),
        FIELD(ucVideoLostAlarm),
        FIELD(ucSOSButtonAlarm),
        FIELD(fOxygenAlarm),
    };
};

template <>
struct Fields<AlarmInPara> {
    using Block = AlarmInPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucIOEnable),
        FIELD(ucIONumber),
        FIELD(ucIOLevel),
        FIELD(ucIOFunc),
        FIELD(usIOLast),
    };
};

int CConfig_Task::Import_Alarm(const TiXmlElement* section, DeviceParaRecord* record) {
    AlarmPara& target = Target(record).stAlarm;
    return ReadAttributesAndTable(
        section, &target, "stAlarmInIO", RowIndex::Number, target.stAlarmInIO);
}

template <>
struct Fields<TimingRecDayPara> {
    using Block = TimingRecDayPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucRT1Type),
        FIELD(ucRT2Type),
        FIELD(uiStartT1),
        FIELD(uiEndT1),
        FIELD(uiStartT2),
        FIELD(uiEndT2),
    };
};

int CConfig_Task::Import_TimingRecord(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadTable(
        section, "stTimingRecDay", RowIndex::DocumentOrder, Target(record).stTimingRecDay);
}

template <>
struct Fields<SpeedFatiguePara> {
    using Block = SpeedFatiguePara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_LowSpeedIsEnable),
        FIELD(ucFD_LowSpeedUnit),
        FIELD(usFD_LowSpeed),
        FIELD(ucFD_OverSpeedIsEnable),
        FIELD(ucFD_OverSpeedUnit),
        FIELD(usFD_OverSpeed),
        FIELD(ucFD_PeakingIsEnable),
        FIELD(ucFD_TimeUnit),
        FIELD(usFD_OverTime),
        FIELD(ucFD_FatigueEnable),
        FIELD(usFD_DrivingTime),
        FIELD(usFD_RestTime),
    };
};

int CConfig_Task::Import_SpeedFatigue(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stSpeedFatigue);
}

template <>
struct Fields<TempAlarmPara> {
    using Block = TempAlarmPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_TempType),
        FIELD(ucFD_LowTempEnable),
        FIELD_BY(fFD_LowTemp, StoreWholeDegrees),
        FIELD(ucFD_HighTempEnable),
        FIELD_BY(fFD_HighTemp, StoreWholeDegrees),
    };
};

int CConfig_Task::Import_TempAlarm(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadTable(section, "stTempAlarmPara", RowIndex::Number, Target(record).stTempAlarm);
}

template <>
struct Fields<GSensorPara> {
    using Block = GSensorPara;
    static constexpr FieldRow rows[] = {
        FIELD(fFD_X),
        FIELD(fFD_XLimit),
        FIELD(fFD_Y),
        FIELD(fFD_YLimit),
        FIELD(fFD_Z),
        FIELD(fFD_ZLimit),
        FIELD(fFD_RAccel),
        FIELD(fFD_RDecel),
        FIELD(fFD_Crash),
        FIELD(fFD_Swerve),
        FIELD(fFD_TrunOver),
        FIELD(ucFD_AlarmEnable),
        {"ReCalibrate", 0, NoteRecalibration},
    };
};

int CConfig_Task::Import_GSensor(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stGSensor);
}
