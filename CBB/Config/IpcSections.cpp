// SPDX-License-Identifier: GPL-2.0-only
// IP cameras.
#include "CBB/Config/IpcSections.h"

#include <ctime>
#include <tinyxml.h>

#include "CBB/Config/Config_Task.h"
#include "CBB/Config/FieldTable.h"
#include "CBB/Util/Console.h"
#include "CBB/Util/Printable.h"

namespace {

// One character a day, '1' for a day on which the period holds.
int StoreWeekdays(const char* text, uint8_t* field) {
    constexpr int kDays = 7;
    unsigned mask = 0;
    for (int day = 0; day < kDays && text[day]; ++day)
        mask |= (text[day] == '1' ? 1U : 0U) << day;
    *field = static_cast<uint8_t>(mask);
    return 0;
}

// "hour:minute:second". strptime(3) leaves in the record what it read before a failure.
int StoreTimeOfDay(const char* text, uint32_t* field) {
    char start[23] = "";
    Store(text, &start);
    std::tm time{};
    strptime(start, "%H:%M:%S", &time);
    *field = static_cast<uint32_t>(time.tm_hour * 3600 + time.tm_min * 60 + time.tm_sec);
    return 0;
}

void PrintAttributes(const TiXmlElement& row) {
    for (const TiXmlAttribute* a = row.FirstAttribute(); a; a = a->Next())
        ConsoleWrite("Value: " + Printable(a->Name() + std::string("=") + a->Value()) + "\n");
}

} // namespace

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
    const int result = ReadAttributesAndTable(
        section, &target, "stChnIpc", RowIndex::Number, target.stChnIpc, PrintAttributes);
    return result != 0 ? result
                       : ReadTable(section,
                                   "stFunTPeriod",
                                   RowIndex::Number,
                                   target.stFunTPeriod,
                                   PrintAttributes);
}
