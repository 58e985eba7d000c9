// SPDX-License-Identifier: GPL-2.0-only
// What single fields make of their texts.
#include "tests/support/Capture.h"
#include "tests/unit/config/Sections.h"

#include <arpa/inet.h>
#include <cfloat>
#include <cstring>
#include <gtest/gtest.h>

namespace {

TEST(Conversions, Addresses) {
    constexpr std::uint32_t kBefore = 77;
    // clang-format off
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"1.2.3.4", htonl(0x01020304)}, {"1.2.3.400", INADDR_NONE}, {"1..2.3", INADDR_NONE},
        {"256.1.1.1", kBefore}, {"1.99999999999999999999.1.1", kBefore}, {"1.2.3", kBefore},
        {"1.2.3.4.5", kBefore}, {"0x10", 16}, {"0XfF", 255}, {"0x123456789", 0x23456789},
        {"0x", kBefore}, {"0x1g", kBefore}, {"42", 42}, {"-1", 0xFFFFFFFF}, {"4-2", kBefore},
        {"+1", kBefore}, {"", 0}, {"abc", kBefore},
    };
    // clang-format on
    for (const auto& [text, stored] : cases) {
        std::uint32_t address = kBefore;
        EXPECT_EQ(T::ParseAddress(text, &address), stored == kBefore ? -1 : 0) << text;
        EXPECT_EQ(address, stored) << text;
    }
}

template <typename Number>
std::string Show(Number number) {
    return std::to_string(number);
}
template <std::size_t N>
std::string Show(const char (&text)[N]) {
    return {text, strnlen(text, N)};
}
template <typename Number, std::size_t N>
std::string Show(const Number (&array)[N]) {
    return Show(array[0]) + " " + Show(array[1]) + " " + Show(array[2]) + " .. " +
           Show(array[N - 1]);
}

// A section whose own element and whose tables' rows all carry the attributes.
std::string Everywhere(const std::string& attributes) {
    const std::string row = "><r_x " + attributes + "/></";
    return "<s " + attributes + "><stVdaPara" + row + "stVdaPara><stVideoMirrorPara" + row +
           "stVideoMirrorPara></s>";
}

struct Case {
    Import import;
    std::string attributes;
    std::string (*field)(const DeviceParaRecord&);
    std::string stored;
    int result = 0;
};

#define FIELD(path) [](const DeviceParaRecord& record) { return Show(record.path); }

// One record throughout: each case finds what those before it left.
TEST(Conversions, Fields) {
    using namespace std::placeholders;
    const Import vehicle = std::bind(&T::Import_VehicleInfo, _1, _2, _3, 1, true);
    const Import base = &T::Import_stBaseInfo, sub = &T::Import_SubStream,
                 gSensor = &T::Import_GSensor, display = &T::Import_stDisplay,
                 status = &T::Import_stSystemInfo, vda = &T::Import_Vda,
                 reserve = &T::Import_ReserveData, power = &T::Import_Power,
                 mirror = &T::Import_stVideoMirror;
    const auto code = FIELD(stVehicleInfo[1].strFD_Authentication);
    const auto revision = FIELD(stSystemInfo.ATI);
    const auto mask = FIELD(stVda[0].uiFD_Mask);
    const auto data = FIELD(stReserveData.ucReserveData);
    const auto mode = FIELD(stPower.ucPowerMode);
    const std::string r63(63, 'r');
    const std::string f257(257, 'f');
    const Case cases[] = {
        {sub, "ucFD_Quality='300'", FIELD(stSubStream.ucFD_Quality), "44"},
        {sub, "ucFD_Quality='-1'", FIELD(stSubStream.ucFD_Quality), "255"},
        {sub, "ucFD_Quality='x'", FIELD(stSubStream.ucFD_Quality), "0"},
        {sub, "uiFD_BitRate=' 12abc'", FIELD(stSubStream.uiFD_BitRate), "12"},
        {gSensor, "fFD_X='1e999'", FIELD(stGSensor.fFD_X), Show(FLT_MAX)},
        {gSensor, "fFD_X='-1e39'", FIELD(stGSensor.fFD_X), Show(-FLT_MAX)},
        {gSensor, "fFD_X='nan'", FIELD(stGSensor.fFD_X), Show(0.0F)},
        {gSensor, "RECALIBRATE='0' fFD_X='2'", FIELD(stGSensor.fFD_X), Show(2.0F), 1},
        {display, "strLanguage='long'", FIELD(stDisplay.strLanguage), "lon"},
        {display, "strLanguage='c'", FIELD(stDisplay.strLanguage), "c"},
        {base, "ucFD_GpsMode='7' strFD_DeviceNo='1234'", FIELD(stBaseInfo.ucFD_GpsMode), "7", -1},
        {base, "strFD_DeviceNo='1234567890123' ucFD_GpsMode='8'", FIELD(stBaseInfo.ucFD_GpsMode),
         "7", -1},
        {base, "strFD_DeviceNo='12345'", FIELD(stBaseInfo.strFD_DeviceNo), "12345"},
        {status, "DeviceNo='1234'", FIELD(stSystemInfo.DeviceNo), "1234"},
        {status, "ATI='M&#13;&#10;Revision: X1&#13;&#10;I: 2&#13;&#10;OK'", revision, " X1"},
        {status, "ATI='no such label'", revision, ""},
        {status, "ATI='Revision:" + r63 + "r&#13;&#10;'", revision, r63},
        {status, "ATI='Revision:a&#10;b'", revision, "a\nb"},
        {vehicle, "strFD_TerminalID='a' strFD_Authentication='new'", code, ""},
        {vehicle, "strFD_TerminalID='a' strFD_Authentication='kept'", code, "kept"},
        {vehicle, "strFD_CarVIN='1' strFD_DeviceNum=''", code, "kept"},
        {vehicle, "strFD_FacturerID='1234567890123456789'", code, ""},
        {vehicle, "strFD_FacturerID='1234567890123456789' strFD_Authentication='kept'", code,
         "kept"},
        {vehicle, "strFD_FacturerID='12345678901234567890'", code, ""},
        {vehicle, "strFD_Authentication='kept' strFD_TerminalType='t' STRFD_TERMINALTYPE=''", code,
         ""},
        {vehicle, "strFD_Authentication='kept' strFD_DeviceNum='n'", code, ""},
        {vehicle, "strFD_Phonenumber='5'", FIELD(stVehicleInfo[1].strFD_Phonenumber), ""},
        {vda, "uiFD_Mask='1,2,3'", mask, "1 2 0 .. 0"},
        {vda, "uiFD_Mask='4,5,6,'", mask, "4 5 6 .. 0"},
        {vda, "uiFD_Mask='7,0000000000000008,'", mask, "7 8 6 .. 0"},
        {vda, "uiFD_Mask='9,00000000000000009,9,'", mask, "9 8 6 .. 0"},
        {vda, "uiFD_Mask=',-1,'", mask, "0 4294967295 6 .. 0"},
        {reserve, "ucReserveData='" + f257 + "'", data, "255 255 255 .. 255"},
        {reserve, "ucReserveData='0a1'", data, "10 16 255 .. 255"},
        {reserve, "ucReserveData='0b0b0g'", data, "10 16 255 .. 255"},
        {reserve, "ucReserveData='0" + f257 + "'", data, "10 16 255 .. 255"},
        {power, "ucPowerMode='128'", mode, "128"},
        {power, "ucPowerMode='3'", mode, "131"},
        {power, "ucPowerMode='32'", mode, "160"},
        {mirror, "ucFD_Rotate='1'", FIELD(stVideoMirror[0].ucFD_Rotate), "1"},
    };
    T task;
    for (const Case& c : cases) {
        const Element element(Everywhere(c.attributes));
        EXPECT_EQ(c.import(task, element.Get(), nullptr), c.result) << c.attributes;
        EXPECT_EQ(c.field(task.m_stPara), c.stored) << c.attributes;
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
TEST(ConfigTask, PoolsAndMutexesOnFirstUse) {
    struct Opened : T {
        using T::BufPool;
        using T::Mutex;
    } task;
    EXPECT_NE(task.BufPool(0), task.BufPool(1));
    EXPECT_EQ(task.BufPool(0), task.BufPool(0));
    EXPECT_EQ(task.Mutex(3), task.Mutex(3));
    EXPECT_EQ(pthread_mutex_trylock(task.Mutex(3)), 0);
    EXPECT_EQ(pthread_mutex_unlock(task.Mutex(3)), 0);
}

} // namespace
