// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Config/FieldConvert.h"

#include <cfloat>

#include "tests/unit/Unit.h"
#include "tests/unit/config/Sections.h"

TEST(FieldConvert, Addresses) {
    const std::pair<const char*, uint32_t> cases[] = {
        {"255.2.3.400", INADDR_NONE}, {"0XfF", 255},     {"0x123456789", 0x23456789},
        {"2147483648", 0x80000000},   {"4294967298", 2}, {"", 0},
    };
    uint32_t address = 0;
    for (const auto& [text, stored] : cases)
        EXPECT_EQ((std::pair{Task::ParseAddress(text, &address), address}), std::pair(0, stored))
            << text;
    for (const char* text : {"256.1.1.1", "1.99999999999999999999.1.1", "1.2.3", "1.2.3.4.5", "+1"})
        EXPECT_EQ(Task::ParseAddress(text, &address), -1) << text;
    EXPECT_EQ(address, 0U) << "what was there before stays";
}

using std::to_string;
template <size_t N>
static std::string to_string(const char (&text)[N]) {
    return {text, strnlen(text, N)};
}
template <typename Number, size_t N>
static std::string to_string(const Number (&array)[N]) {
    return to_string(array[0]) + " " + to_string(array[1]) + " " + to_string(array[2]) + " .. " +
           to_string(array[N - 1]);
}

#define FIELD(path) [](const DeviceParaRecord& record) { return to_string(record.path); }

using Cases = std::vector<std::pair<std::string, std::string>>;

// Imports elements with each text for `attribute`, whole attributes where that is empty, and
// compares the field and, where it is not 0, the result. Each case finds what those before it left.
static void Expect(Import import, const std::string& attribute,
                   std::string (*field)(const DeviceParaRecord&), const Cases& cases) {
    Task task;
    for (const auto& [text, stored] : cases) {
        const std::string all = attribute.empty() ? text : attribute + "='" + text + "'";
        // In a row of a table, too: what is none of a place's fields is passed over.
        const Element element("<s " + all + "><stVdaPara><r_x " + all + "/></stVdaPara></s>");
        const int result = (task.*import)(element.Get(), nullptr);
        EXPECT_EQ(field(task.m_stPara) + (result != 0 ? " => " + to_string(result) : ""), stored)
            << all;
    }
}

TEST(FieldConvert, Fields) {
    const std::string r63(63, 'r'), f257(257, 'f'), lf = "&#13;&#10;";
    Expect(&Task::Import_SubStream, "ucFD_Quality", FIELD(stSubStream.ucFD_Quality),
           {{"300", "44"}, {"-1", "255"}, {"x", "0"}, {" 12abc", "12"}, {"4294967299", "3"}});
    Expect(&Task::Import_GSensor, "", FIELD(stGSensor.fFD_X),
           {{"fFD_X='1e999'", to_string(FLT_MAX)},
            {"fFD_X='-1e39'", to_string(-FLT_MAX)},
            {"fFD_X='nan'", to_string(0.0F)},
            {"RECALIBRATE='0' fFD_X='2'", to_string(2.0F) + " => 1"}});
    Expect(&Task::Import_stBaseInfo, "", FIELD(stBaseInfo.ucFD_GpsMode),
           {{"ucFD_GpsMode='7' strFD_DeviceNo='1234'", "7 => -1"},
            {"strFD_DeviceNo='1234567890123' ucFD_GpsMode='8'", "7 => -1"},
            {"strFD_DeviceNo='12345' ucFD_GpsMode='9'", "9"}});
    Expect(&Task::Import_stSystemInfo, "ATI", FIELD(stSystemInfo.ATI),
           {{"M" + lf + "Revision: X1" + lf + "I: 2" + lf + "OK", " X1"},
            {"no such label", ""},
            {"Revision:" + r63 + "r" + lf, r63},
            {"Revision:a&#10;b", "a\nb"}});
    Expect(&Task::Vehicle<1, true>, "", FIELD(stVehicleInfo[1].strFD_Authentication),
           {{"strFD_FacturerID='1234567890123456789' strFD_Authentication='new'", ""},
            {"strFD_FacturerID='1234567890123456789' strFD_Authentication='kept'", "kept"},
            {"strFD_CarVIN='1' strFD_DeviceNum=''", "kept"},
            {"strFD_FacturerID='12345678901234567890'", ""},
            {"strFD_Authentication='x' strFD_TerminalType='t' STRFD_TERMINALTYPE=''", ""},
            {"strFD_Authentication='x' strFD_TerminalID='a'", ""},
            {"strFD_Authentication='x' strFD_DeviceNum='n'", ""}});
    Expect(&Task::Vehicle<1, true>, "strFD_Phonenumber", FIELD(stVehicleInfo[1].strFD_Phonenumber),
           {{"5", ""}});
    Expect(&Task::Import_Vda, "uiFD_Mask", FIELD(stVda[0].uiFD_Mask),
           {{"1,2,3", "1 2 0 .. 0"},
            {"4,5,6,", "4 5 6 .. 0"},
            {"7,0000000000000008,", "7 8 6 .. 0"},
            {"9,00000000000000009,9,", "9 8 6 .. 0"},
            {",-1,", "0 4294967295 6 .. 0"}});
    Expect(&Task::Import_ReserveData, "ucReserveData", FIELD(stReserveData.ucReserveData),
           {{f257, "255 255 255 .. 255"},
            {"0a1", "10 16 255 .. 255"},
            {"0b0b0g", "10 16 255 .. 255"},
            {"0" + f257, "10 16 255 .. 255"}});
    Expect(&Task::Import_Power, "ucPowerMode", FIELD(stPower.ucPowerMode),
           {{"128", "128"}, {"3", "131"}, {"32", "160"}});
}
