// SPDX-License-Identifier: GPL-2.0-only
// What single fields make of their texts.
#include <arpa/inet.h>
#include <cfloat>
#include <cstring>
#include <gtest/gtest.h>

#include "tests/support/Capture.h"
#include "tests/unit/config/Sections.h"

namespace {

TEST(Conversions, Addresses) {
    constexpr uint32_t kBefore = 77;
    // clang-format off
    const std::pair<const char*, uint32_t> cases[] = {
        {"1.2.3.4", htonl(0x01020304)}, {"1.2.3.400", INADDR_NONE}, {"1..2.3", INADDR_NONE},
        {"256.1.1.1", kBefore}, {"1.99999999999999999999.1.1", kBefore}, {"1.2.3", kBefore},
        {"1.2.3.4.5", kBefore}, {"0x10", 16}, {"0XfF", 255}, {"0x123456789", 0x23456789},
        {"0x", kBefore}, {"0x1g", kBefore}, {"42", 42}, {"2147483648", 0x80000000}, {"4294967298", 2}, {"-1", 0xFFFFFFFF}, {"4-2", kBefore},
        {"+1", kBefore}, {"", 0}, {"abc", kBefore},
    };
    // clang-format on
    for (const auto& [text, stored] : cases) {
        uint32_t address = kBefore;
        EXPECT_EQ(T::ParseAddress(text, &address), stored == kBefore ? -1 : 0) << text;
        EXPECT_EQ(address, stored) << text;
    }
}

template <typename Number>
std::string Show(Number number) {
    return std::to_string(number);
}
template <size_t N>
std::string Show(const char (&text)[N]) {
    return {text, strnlen(text, N)};
}
template <typename Number, size_t N>
std::string Show(const Number (&array)[N]) {
    return Show(array[0]) + " " + Show(array[1]) + " " + Show(array[2]) + " .. " +
           Show(array[N - 1]);
}

#define FIELD(path) [](const DeviceParaRecord& record) { return Show(record.path); }

struct Group {
    Import import;
    std::string attribute; // none: the texts of the cases are whole attributes
    std::string (*field)(const DeviceParaRecord&);
    struct {
        std::string text;
        std::string stored;
        int result = 0;
    } cases[8];
};

// In the section's element and in rows of its tables: what is none of a place's fields is passed
// over.
std::string Everywhere(const std::string& name, const std::string& text) {
    const std::string attribute = name.empty() ? text : name + "='" + text + "'";
    return "<s " + attribute + "><stVdaPara><r_x " + attribute +
           "/></stVdaPara><stVideoMirrorPara><r_x " + attribute + "/></stVideoMirrorPara></s>";
}

// One record throughout: each case finds what those before it left.
TEST(Conversions, Fields) {
    using namespace std::placeholders;
    const Import vehicle = std::bind(&T::Import_VehicleInfo, _1, _2, _3, 1, true);
    const std::string r63(63, 'r'), f257(257, 'f'), lf = "&#13;&#10;";
    // clang-format off
    const Group groups[] = {
        {&T::Import_SubStream, "ucFD_Quality", FIELD(stSubStream.ucFD_Quality),
         {{"300", "44"}, {"-1", "255"}, {"x", "0"}, {" 12abc", "12"}, {"4294967299", "3"}}},
        {&T::Import_GSensor, "fFD_X", FIELD(stGSensor.fFD_X),
         {{"1e999", Show(FLT_MAX)}, {"-1e39", Show(-FLT_MAX)}, {"nan", Show(0.0F)}}},
        {&T::Import_GSensor, "", FIELD(stGSensor.fFD_X),
         {{"RECALIBRATE='0' fFD_X='2'", Show(2.0F), 1}}},
        {&T::Import_stDisplay, "strLanguage", FIELD(stDisplay.strLanguage),
         {{"long", "lon"}, {"c", "c"}}},
        {&T::Import_stBaseInfo, "", FIELD(stBaseInfo.ucFD_GpsMode),
         {{"ucFD_GpsMode='7' strFD_DeviceNo='1234'", "7", -1},
          {"strFD_DeviceNo='1234567890123' ucFD_GpsMode='8'", "7", -1},
          {"strFD_DeviceNo='12345' ucFD_GpsMode='9'", "9"}}},
        {&T::Import_stSystemInfo, "DeviceNo", FIELD(stSystemInfo.DeviceNo), {{"1234", "1234"}}},
        {&T::Import_stSystemInfo, "ATI", FIELD(stSystemInfo.ATI),
         {{"M" + lf + "Revision: X1" + lf + "I: 2" + lf + "OK", " X1"}, {"no such label", ""},
          {"Revision:" + r63 + "r" + lf, r63}, {"Revision:a&#10;b", "a\nb"}}},
        {vehicle, "", FIELD(stVehicleInfo[1].strFD_Authentication),
         {{"strFD_TerminalID='a' strFD_Authentication='new'", ""},
          {"strFD_TerminalID='a' strFD_Authentication='kept'", "kept"},
          {"strFD_CarVIN='1' strFD_DeviceNum=''", "kept"},
          {"strFD_FacturerID='1234567890123456789'", ""},
          {"strFD_FacturerID='1234567890123456789' strFD_Authentication='kept'", "kept"},
          {"strFD_FacturerID='12345678901234567890'", ""},
          {"strFD_Authentication='x' strFD_TerminalType='t' STRFD_TERMINALTYPE=''", ""},
          {"strFD_Authentication='x' strFD_DeviceNum='n'", ""}}},
        {vehicle, "strFD_Phonenumber", FIELD(stVehicleInfo[1].strFD_Phonenumber), {{"5", ""}}},
        {&T::Import_Vda, "uiFD_Mask", FIELD(stVda[0].uiFD_Mask),
         {{"1,2,3", "1 2 0 .. 0"}, {"4,5,6,", "4 5 6 .. 0"},
          {"7,0000000000000008,", "7 8 6 .. 0"}, {"9,00000000000000009,9,", "9 8 6 .. 0"},
          {",-1,", "0 4294967295 6 .. 0"}}},
        {&T::Import_ReserveData, "ucReserveData", FIELD(stReserveData.ucReserveData),
         {{f257, "255 255 255 .. 255"}, {"0a1", "10 16 255 .. 255"},
          {"0b0b0g", "10 16 255 .. 255"}, {"0" + f257, "10 16 255 .. 255"}}},
        {&T::Import_Power, "ucPowerMode", FIELD(stPower.ucPowerMode),
         {{"128", "128"}, {"3", "131"}, {"32", "160"}}},
        {&T::Import_stVideoMirror, "ucFD_Rotate", FIELD(stVideoMirror[0].ucFD_Rotate), {{"1", "1"}}},
    };
    // clang-format on
    T task;
    for (const Group& group : groups) {
        for (const auto& c : group.cases) {
            if (c.text.empty())
                break;
            const std::string xml = Everywhere(group.attribute, c.text);
            const Element element(xml);
            EXPECT_EQ(group.import(task, element.Get(), nullptr), c.result) << xml;
            EXPECT_EQ(group.field(task.m_stPara), c.stored) << xml;
        }
    }
}

// A refused device number and the rows of the IP cameras are printed; a row beyond the one camera
// leaves the periods their turn, a malformed one does not.
TEST(Conversions, Printed) {
    T task;
    const auto print = [&](Import import, const std::string& xml, int result) {
        return Capture([&] { EXPECT_EQ(import(task, Element(xml).Get(), nullptr), result); }).out;
    };
    EXPECT_EQ(print(&T::Import_stBaseInfo, "<s strFD_DeviceNo='1234567890123456'/>", -1),
              "CConfig_Task::Import_stBaseInfo, invalid device id:1234567890123456.\n");
    const std::string period =
        "<stFunTPeriod><p_-1 ucFD_Valid='1'/><p_06 strFD_Wday='x11111111' other='y' "
        "strFD_StartT='junk' strFD_EndT='7'/></stFunTPeriod></s>";
    EXPECT_EQ(print(&T::Import_Ipc, "<s><stChnIpc><c/></stChnIpc>" + period, -1), "");
    EXPECT_EQ(print(&T::Import_Ipc,
                    "<s strFD_User='u'><stChnIpc><c_0 uiFD_IP='a'/><c_1 uiFD_IP='b'/></stChnIpc>" +
                        period,
                    0),
              "Value: uiFD_IP=a\nValue: strFD_Wday=x11111111\nValue: other=y\n"
              "Value: strFD_StartT=junk\nValue: strFD_EndT=7\n");
    const FunTPeriodPara& read = task.m_stPara.stIpc.stFunTPeriod[6];
    EXPECT_EQ(read.strFD_Wday, 0x7E);
    EXPECT_EQ(read.strFD_StartT, 0U);
    EXPECT_EQ(read.strFD_EndT, 7 * 3600U);
}

// Created once each; the leak checker sees their release.
TEST(ConfigTask, TablesAndMutexesOnFirstUse) {
    struct Opened : T {
        using T::Mutex;
        using T::Table;
    } task;
    EXPECT_NE(task.Table(0), task.Table(1));
    EXPECT_EQ(task.Table(0), task.Table(0));
    EXPECT_EQ(task.Mutex(3), task.Mutex(3));
    EXPECT_EQ(pthread_mutex_trylock(task.Mutex(3)), 0);
    EXPECT_EQ(pthread_mutex_unlock(task.Mutex(3)), 0);
}

} // namespace
