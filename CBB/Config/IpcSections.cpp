// SPDX-License-Identifier: GPL-2.0-only
// Reserve data and IP cameras.
#include "CBB/Config/Config_Task.h"
#include "CBB/Config/FieldTable.h"
#include "CBB/Util/HexText.h"

#include <cstdio>
#include <ctime>
#include <tinyxml.h>

namespace {

// All or nothing: decoded aside first, since a text may turn out not to be hexadecimal at its end.
int StoreReserveData(const char* text, std::uint8_t (*field)[128]) {
    std::uint8_t bytes[sizeof *field];
    int count = sizeof bytes;
    if (HexTextToBytes(text, static_cast<int>(std::strlen(text)), bytes, &count) == 0)
        std::memcpy(*field, bytes, static_cast<std::size_t>(count));
    return 0;
}

// One character a day, '1' for a day on which the period holds.
int StoreWeekdays(const char* text, std::uint8_t* field) {
    constexpr int kDays = 7;
    unsigned mask = 0;
    for (int day = 0; day < kDays && text[day]; ++day)
        mask |= (text[day] == '1' ? 1U : 0U) << day;
    *field = static_cast<std::uint8_t>(mask);
    return 0;
}

// "hour:minute:second". strptime(3) leaves in the record what it read before a failure.
int StoreTimeOfDay(const char* text, std::uint32_t* field) {
    char start[23] = "";
    Store(text, &start);
    std::tm time{};
    strptime(start, "%H:%M:%S", &time);
    *field = static_cast<std::uint32_t>(time.tm_hour * 3600 + time.tm_min * 60 + time.tm_sec);
    return 0;
}

void PrintAttributes(const TiXmlElement& row) {
    for (const TiXmlAttribute* a = row.FirstAttribute(); a; a = a->Next())
        std::printf("Value: %s=%s\n", a->Name(), a->Value());
}

} // namespace

template <>
struct Fields<ReserveDataPara> {
    using Block = ReserveDataPara;
    static constexpr FieldRow rows[] = {
        FIELD_BY(ucReserveData, StoreReserveData),
    };
};

int CConfig_Task::Import_ReserveData(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stReserveData);
}

template <>
struct Fields<IpcPara> {
    using Block = IpcPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_PureNVR),
        FIELD(ucFD_Enable),
        FIELD(ucFD_IPCNum),
        FIELD(usFD_FuncMode),
        FIELD(strFD_User),
        FIELD(strFD_Pass),
    };
};

template <>
struct Fields<ChnIpcPara> {
    using Block = ChnIpcPara;
    static constexpr FieldRow rows[] = {
        FIELD_BY(uiFD_IP, StoreFull),
    };
};

template <>
struct Fields<FunTPeriodPara> {
    using Block = FunTPeriodPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_Valid),
        FIELD_BY(strFD_Wday, StoreWeekdays),
        FIELD_BY(strFD_StartT, StoreTimeOfDay),
        FIELD_BY(strFD_EndT, StoreTimeOfDay),
    };
};

int CConfig_Task::Import_Ipc(const TiXmlElement* section, DeviceParaRecord* record) {
    IpcPara& target = Target(record).stIpc;
    int result = ReadAttributes(section, &target);
    if (result == 0)
        result = ReadTable(section, "stChnIpc", RowIndex::Number, target.stChnIpc, PrintAttributes);
    if (result == 0)
        result = ReadTable(
            section, "stFunTPeriod", RowIndex::Number, target.stFunTPeriod, PrintAttributes);
    return result;
}
