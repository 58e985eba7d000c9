// SPDX-License-Identifier: GPL-2.0-only
// What single fields make of their texts.
#include "tests/support/Capture.h"
#include "tests/unit/config/Sections.h"

#include <arpa/inet.h>
#include <cfloat>
#include <cstring>
#include <gtest/gtest.h>
#include <string_view>

namespace {

// A record, into which elements are imported one after another.
struct Imported {
    template <typename Function, typename... Rest>
    int operator()(Function importer, const std::string& xml, Rest... rest) {
        const Element element(xml);
        EXPECT_NE(element.Get(), nullptr) << xml;
        return (task.*importer)(element.Get(), &record, rest...);
    }

    CConfig_Task task;
    DeviceParaRecord record{};
};

using T = CConfig_Task;

template <std::size_t N>
std::string_view Text(const char (&field)[N]) {
    return {field, strnlen(field, N)};
}

TEST(Conversions, Addresses) {
    constexpr std::uint32_t kBefore = 77;
    struct Case {
        const char* text;
        std::uint32_t stored; // kBefore: left alone
    };
    const Case cases[] = {
        {"1.2.3.4", htonl(0x01020304)},
        {"255.255.255.0", htonl(0xFFFFFF00)},
        {"1.2.3.400", INADDR_NONE}, // the last group is not range-tested
        {"1..2.3", INADDR_NONE},
        {"256.1.1.1", kBefore},
        {"1.99999999999999999999.1.1", kBefore},
        {"1.2.3", kBefore},
        {"1.2.3.4.5", kBefore},
        {"0x10", 16},
        {"0XfF", 255},
        {"0x123456789", 0x23456789},
        {"0x", kBefore},
        {"0x1g", kBefore},
        {"42", 42},
        {"-1", 0xFFFFFFFF},
        {"4-2", kBefore},
        {"+1", kBefore},
        {"", 0},
        {"abc", kBefore},
    };
    for (const Case& c : cases) {
        std::uint32_t address = kBefore;
        EXPECT_EQ(T::ParseAddress(c.text, &address), c.stored == kBefore ? -1 : 0) << c.text;
        EXPECT_EQ(address, c.stored) << c.text;
    }
}

TEST(Conversions, Numbers) {
    Imported in;
    in(&T::Import_SubStream,
       "<s ucFD_EncodeMode='300' ucFD_Resolution='-1' ucFD_Quality='x' uiFD_BitRate=' 12abc'/>");
    EXPECT_EQ(in.record.stSubStream.ucFD_EncodeMode, 44);
    EXPECT_EQ(in.record.stSubStream.ucFD_Resolution, 255);
    EXPECT_EQ(in.record.stSubStream.ucFD_Quality, 0);
    EXPECT_EQ(in.record.stSubStream.uiFD_BitRate, 12U);

    in(&T::Import_GSensor, "<s fFD_X='1e999' fFD_Y='-1e39' fFD_Z='nan' fFD_Crash='-inf'/>");
    EXPECT_EQ(in.record.stGSensor.fFD_X, FLT_MAX);
    EXPECT_EQ(in.record.stGSensor.fFD_Y, -FLT_MAX);
    EXPECT_EQ(in.record.stGSensor.fFD_Z, 0);
    EXPECT_EQ(in.record.stGSensor.fFD_Crash, -FLT_MAX);
    EXPECT_EQ(in(&T::Import_GSensor, "<s RECALIBRATE='0' fFD_X='2'/>"), 1);
    EXPECT_EQ(in.record.stGSensor.fFD_X, 2);
}

TEST(Conversions, AShortTextClearsTheRest) {
    Imported in;
    in(&T::Import_stDisplay, "<s strLanguage='long'/>");
    EXPECT_EQ(Text(in.record.stDisplay.strLanguage), "lon");
    in(&T::Import_stDisplay, "<s strLanguage='c'/>");
    EXPECT_EQ(std::memcmp(in.record.stDisplay.strLanguage, "c\0\0", 4), 0);
}

TEST(Conversions, DeviceNumber) {
    for (const std::string number :
         {"1234", "12345", "123456789012", "1234567890123", "1234567890123456"}) {
        const bool accepted = number.size() >= 5 && number.size() <= 12;
        Imported in;
        int result = 0;
        const Captured printed = Capture([&] {
            result = in(&T::Import_stBaseInfo,
                        "<s ucFD_TimeZone='8' strFD_DeviceNo='" + number + "' ucFD_GpsMode='1'/>");
        });
        EXPECT_EQ(result, accepted ? 0 : -1);
        EXPECT_EQ(
            printed.out,
            accepted ? "" : "CConfig_Task::Import_stBaseInfo, invalid device id:" + number + ".\n");
        EXPECT_EQ(Text(in.record.stBaseInfo.strFD_DeviceNo), accepted ? number : "");
        EXPECT_EQ(in.record.stBaseInfo.ucFD_TimeZone, 8);
        EXPECT_EQ(in.record.stBaseInfo.ucFD_GpsMode, accepted ? 1 : 0);
    }
}

TEST(Conversions, ModuleRevision) {
    const std::string crlf = "&#13;&#10;";
    const std::string longText(80, 'r');
    Imported in;
    for (const auto& [text, stored] :
         {std::pair<std::string, std::string>{
              "Maker" + crlf + "Revision: X1" + crlf + "IMEI" + crlf + "OK", " X1"},
          {"Revision:a&#10;b", "a\nb"},
          {"no such label", ""},
          {"Revision:" + longText + crlf, longText.substr(0, 63)},
          {"xRevision:", ""}}) {
        in(&T::Import_stSystemInfo, "<s ATI='" + text + "'/>");
        EXPECT_EQ(Text(in.record.stSystemInfo.ATI), stored);
    }
}

TEST(Conversions, IdentityChangeClearsTheAuthentication) {
    struct Case {
        const char* attributes;
        const char* authentication;
    };
    constexpr Case cases[] = {
        {"strFD_TerminalID='id' strFD_Authentication='new'", ""},
        {"strFD_TerminalID='id' strFD_Authentication='code'", "code"},
        {"strFD_TerminalID='id' strFD_CarVIN='other'", "code"},
        {"strFD_DeviceNum='n'", ""},
        {"strFD_Authentication='code'", "code"},
        {"strFD_FacturerID='1234567890123456789'", ""},
        {"strFD_Authentication='code' strFD_FacturerID='1234567890123456789'", "code"},
        {"strFD_FacturerID='12345678901234567890'", ""},
        {"strFD_Authentication='code' STRFD_FACTURERID='a' strFD_FacturerID='1234567890123456789'",
         ""},
        {"strFD_Authentication='code' strFD_TerminalType='t'", ""},
    };
    Imported in;
    for (const Case& c : cases) {
        EXPECT_EQ(in(&T::Import_VehicleInfo,
                     "<s " + std::string(c.attributes) + " strFD_Phonenumber='5'/>", 1, true),
                  0);
        EXPECT_EQ(Text(in.record.stVehicleInfo[1].strFD_Authentication), c.authentication)
            << c.attributes;
        EXPECT_EQ(Text(in.record.stVehicleInfo[1].strFD_Phonenumber), "");
    }
}

TEST(Conversions, DetectionMask) {
    struct Case {
        std::string text;
        std::uint32_t entries[4]; // 0, 1, 2 and 31
    };
    std::string many;
    for (int i = 1; i <= 33; ++i)
        many += std::to_string(i) + ",";
    const Case cases[] = {
        {"1,2,3", {1, 2, 9, 9}},
        {"1,2,3,", {1, 2, 3, 9}},
        {"7,0000000000000002,", {7, 2, 9, 9}},
        {"7,00000000000000002,3,", {7, 9, 9, 9}},
        {",-1,", {0, 0xFFFFFFFF, 9, 9}},
        {many, {1, 2, 3, 32}},
    };
    for (const Case& c : cases) {
        Imported in;
        std::uint32_t(&mask)[32] = in.record.stVda[0].uiFD_Mask;
        std::fill(std::begin(mask), std::end(mask), 9);
        in(&T::Import_Vda, "<s><stVdaPara><row_0 uiFD_Mask='" + c.text + "'/></stVdaPara></s>");
        EXPECT_EQ(in.record.stReserveData.ucReserveData[0], 0);
        const std::uint32_t read[] = {mask[0], mask[1], mask[2], mask[31]};
        EXPECT_EQ(std::memcmp(read, c.entries, sizeof read), 0) << c.text;
    }
}

TEST(Conversions, ReserveData) {
    const auto import = [](const std::string& text) {
        Imported in;
        std::memset(&in.record.stReserveData, 0xEE, sizeof in.record.stReserveData);
        in(&T::Import_ReserveData, "<s ucReserveData='" + text + "'/>");
        EXPECT_EQ(in.record.stIpc.ucFD_PureNVR, 0);
        const std::uint8_t(&data)[128] = in.record.stReserveData.ucReserveData;
        return std::vector<int>{data[0], data[1], data[127]};
    };
    const std::vector<int> untouched = {0xEE, 0xEE, 0xEE};
    EXPECT_EQ(import("0aF"), (std::vector<int>{0x0A, 0xF0, 0xEE}));
    EXPECT_EQ(import("0aFg"), untouched);
    EXPECT_EQ(import(std::string(257, '1')), (std::vector<int>{0x11, 0x11, 0x11}));
    EXPECT_EQ(import(std::string(258, '1')), untouched);
}

TEST(Conversions, PowerFlagsOnlyGrow) {
    Imported in;
    for (const auto& [text, stored] :
         {std::pair{"128", 0x80}, {"3", 0x83}, {"32", 0xA0}, {"-1", 0xFF}, {"0", 0xE0}}) {
        in(&T::Import_Power, "<s ucPowerMode='" + std::string(text) + "'/>");
        EXPECT_EQ(in.record.stPower.ucPowerMode, stored);
    }
}

// Rows are printed as they are read; a row beyond the one camera leaves the periods their turn.
TEST(Conversions, IpCameras) {
    Imported in;
    int result = -1;
    const Captured printed = Capture([&] {
        result =
            in(&T::Import_Ipc,
               "<s strFD_User='u'><stChnIpc><c_0 uiFD_IP='10.0.0.9'/><c_1 uiFD_IP='x'/></stChnIpc>"
               "<stFunTPeriod><p_0 strFD_Wday='11' other='y'/><p_06 strFD_Wday='x111111111' "
               "strFD_StartT='junk' strFD_EndT='7'/>"
               "</stFunTPeriod></s>");
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(printed.out, "Value: uiFD_IP=10.0.0.9\nValue: strFD_Wday=11\nValue: other=y\nValue: "
                           "strFD_Wday=x111111111\n"
                           "Value: strFD_StartT=junk\nValue: strFD_EndT=7\n");
    const IpcPara& ipc = in.record.stIpc;
    EXPECT_EQ(Text(ipc.stChnIpc[0].uiFD_IP), "10.0.0.9");
    EXPECT_EQ(ipc.stFunTPeriod[0].strFD_Wday, 0x03);
    EXPECT_EQ(ipc.stFunTPeriod[6].strFD_Wday, 0x7E);
    EXPECT_EQ(ipc.stFunTPeriod[6].strFD_StartT, 0U);
    EXPECT_EQ(ipc.stFunTPeriod[6].strFD_EndT, 7 * 3600U);
    Capture([&] {
        EXPECT_EQ(in(&T::Import_Ipc, "<s><stChnIpc><c/></stChnIpc><stFunTPeriod><p_1 "
                                     "ucFD_Valid='1'/></stFunTPeriod></s>"),
                  -1);
    });
    EXPECT_EQ(ipc.stFunTPeriod[1].ucFD_Valid, 0);
}

} // namespace
