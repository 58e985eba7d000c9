// SPDX-License-Identifier: GPL-2.0-only
// Vehicle, users, wired network, access, serial port, power and reserve data.
#include "CBB/Config/DeviceSections.h"

#include <cstring>

#include "CBB/Config/Config_Task.h"
#include "CBB/Config/FieldTable.h"
#include "CBB/Util/HexText.h"
#include "CBB/Util/TextFun.h"

namespace {

constexpr int kIdentityChanged = 1;

// Compared with the whole new text: one too long for the field is always a change.
int StoreIdentity(const char* text, char (*field)[20]) {
    const bool changed = strncmp(*field, text, sizeof(*field)) != 0;
    Store(text, field);
    return changed ? kIdentityChanged : 0;
}

// The mode is replaced; a flag, once set, is not cleared by an import.
int StorePowerMode(const char* text, uint8_t* field) {
    constexpr unsigned kFlags = 0xE0;
    *field = static_cast<uint8_t>((*field & kFlags) | static_cast<unsigned>(ToInt(text)));
    return 0;
}

// All or nothing: decoded aside first, since a text may turn out not to be hexadecimal at its end.
int StoreReserveData(const char* text, uint8_t (*field)[128]) {
    uint8_t bytes[sizeof(*field)];
    int count = sizeof(bytes);
    if (HexTextToBytes(text, static_cast<int>(strlen(text)), bytes, &count) == 0)
        memcpy(*field, bytes, static_cast<size_t>(count));
    return 0;
}

} // namespace

template <>
struct Fields<VehicleInfoPara> {
    using Block = VehicleInfoPara;
    static constexpr FieldRow rows[] = {
        FIELD(strFD_CompanyName),
        FIELD(strFD_LicensePlate),
        FIELD(strFD_DriverName),
        FIELD_BY(strFD_DeviceNum, StoreIdentity),
        FIELD(strFD_Phonenumber),
        FIELD(strFD_ServiceTel),
        FIELD(strFD_ProvincialId),
        FIELD(strFD_CityDomainId),
        FIELD(strFD_CarColors),
        FIELD(strFD_Authentication),
        FIELD_BY(strFD_TerminalType, StoreIdentity),
        FIELD_BY(strFD_TerminalID, StoreIdentity),
        FIELD_BY(strFD_FacturerID, StoreIdentity),
        FIELD(strFD_CarVIN),
        FIELD(strFD_CarType),
        FIELD(strFD_DrivingLicense),
    };
};

int CConfig_Task::Import_VehicleInfo(const TiXmlElement* section, DeviceParaRecord* record,
                                     int block, bool skipPhone) {
    VehicleInfoPara& target = Target(record).stVehicleInfo[block == 0 ? 0 : 1];
    char phone[sizeof(target.strFD_Phonenumber)];
    memcpy(phone, target.strFD_Phonenumber, sizeof(phone));
    const int result = ReadAttributes(section, &target);
    if (skipPhone)
        memcpy(target.strFD_Phonenumber, phone, sizeof(phone));
    if (result != kIdentityChanged)
        return result;
    memset(target.strFD_Authentication, 0, sizeof(target.strFD_Authentication));
    return 0;
}

template <>
struct Fields<UsersPara> {
    using Block = UsersPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_PWEnableFlag),
        FIELD(strFD_NormalPasswd),
        FIELD(strFD_AdminPasswd),
    };
};

template <>
struct Fields<CustomUserPara> {
    using Block = CustomUserPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_UserStatus),
        FIELD(strFD_UserName),
        FIELD(strFD_UserPWD),
        FIELD(usFD_UserRoles),
    };
};

int CConfig_Task::Import_Users(const TiXmlElement* section, DeviceParaRecord* record) {
    UsersPara& target = Target(record).stUsers;
    return ReadAttributesAndTable(
        section, &target, "stCustomUser", RowIndex::DocumentOrder, target.stCustomUser);
}

template <>
struct Fields<LanPara> {
    using Block = LanPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_DhcpEnableFlag),
        FIELD_BY(uiFD_LocalIp, StoreAddress),
        FIELD_BY(uiFD_NetMask, StoreAddress),
        FIELD_BY(uiFD_GateWay, StoreAddress),
        FIELD(strFD_Mac),
    };
};

int CConfig_Task::Import_Lan(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stLan);
}

template <>
struct Fields<GroupNoPara> {
    using Block = GroupNoPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_Enable),
        FIELD(usFD_GroupNo),
    };
};

int CConfig_Task::Import_GroupNo(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stGroupNo);
}

template <>
struct Fields<AccessExportPara> {
    using Block = AccessExportPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_PasswdEnable),
        FIELD(ucFD_WorkMode),
        FIELD(ucFD_ExportEnable),
        FIELD(ucFD_ExportLimit),
    };
};

int CConfig_Task::Import_AccessExport(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stAccessExport);
}

template <>
struct Fields<SerialChnPara> {
    using Block = SerialChnPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_DataMode),
        FIELD(uiBaudRate),
        FIELD(ucDataBit),
        FIELD(ucParity),
        FIELD(ucStopBit),
        FIELD(ucCount),
    };
};

int CConfig_Task::Import_SerialChn(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadTable(
        section, "stSerialChnPara", RowIndex::OneCharacter, Target(record).stSerialChn);
}

template <>
struct Fields<PowerPara> {
    using Block = PowerPara;
    static constexpr FieldRow rows[] = {
        FIELD_BY(ucPowerMode, StorePowerMode),
        FIELD(ucPOnDelayEnable),
        FIELD(usPOffDelayTime),
        FIELD(uiTimingPOnTime),
        FIELD(uiTimingPOffTime),
        FIELD(uiAccOffStopRecCh),
    };
};

int CConfig_Task::Import_Power(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stPower);
}

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
