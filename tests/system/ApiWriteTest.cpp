// SPDX-License-Identifier: GPL-2.0-only
// Each path that writes: the datagrams that it sends for its form fields, byte for byte.

#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/system/Api.h"

namespace {

// A write's field, as the tools send it and as it arrives. In a table: `T31 FORM [ATTRIBUTE]`, a
// text of at most 31 bytes, or `N8 ...`, a number of 8 bits; the attribute's name if it is another
// one.
struct Field {
    explicit Field(const std::string& row) {
        std::istringstream stream(row);
        stream >> kind >> limit >> form;
        attribute = stream >> attribute ? attribute : form;
    }
    char kind = ' ';
    size_t limit = 0;
    std::string form, attribute;
};

struct Group {
    const char* path;
    const char* open;
    const char* fields;
    const char* close;
    int buffer;        // most bytes of a value that the form reader takes
    bool asksVersion;  // queries the channel count before the write
    const char* fixed; // form fields beside the table's
};

const Group kGroups[] = {
    {"/set_NetWModeInfo", "<stNetWorkMode", "N8 ucFD_NetWType ucFD_NetType|N16 usFD_GPSInterval",
     "/>", 63, false, ""},
    {"/set_WifiInfo", R"(<stWifi ucFD_WorkMode="1")",
     "T31 strFD_SSID|T31 strFD_Passwd|N8 ucFD_AuthMode|N8 ucFD_CryptType|N8 ucFD_DhcpEnableFlag",
     "/>", 63, false, "ucFD_WorkMode=257"},
    {"/set_GNetInfo", "<stMobileGNet",
     "N8 ucFD_NetType|T31 strFD_Apn|T23 strFD_PhoneNo|T35 strFD_UserName|T35 strFD_UserPasswd",
     "/>", 63, false, ""},
    {"/set_GB28181Info", R"(<stGB28181 ucFD_Enable="129")",
     "T31 strFD_Manufacturer|T31 strFD_ModelName|T31 strFD_ServerIp|N16 usFD_ServerPort|T31 "
     "strFD_ServerID|T31 strFD_DeviceId|N16 usFD_DevicePort|T31 strFD_DeviceUser|T31 "
     "strFD_DevicePass",
     R"(><stGB28181SubID><SUBDEVID_0 strFD_LensId="L1"/></stGB28181SubID></stGB28181>)", 511, true,
     "ucFD_GB28181Enable=3&ucFD_StreamType=5&strFD_LensId=*L1*"},
    // A number too long for the form reader counts as absent here.
    {"/set_BaseInfo", "<stBaseInfo", "T15 strFD_DeviceNo|N8 ucFD_TimeZone",
     R"( ucFD_GpsSTFlag="1" strFD_CurTime="2026-01-02 03:04:05" />)", 63, false,
     "ucFD_GpsSTFlag=5&strFD_CurTime=2026-01-02+03:04:05"},
};

// What a value is on the wire.
std::string Arrives(const Group& group, const Field& field, const std::string& value) {
    const std::string read = value.substr(0, static_cast<size_t>(group.buffer));
    if (field.kind == 'N') {
        const auto number = static_cast<uint32_t>(strtoll(read.c_str(), nullptr, 10));
        return std::to_string(number & ((1u << field.limit) - 1));
    }
    std::string escaped;
    for (const char byte : read.substr(0, field.limit)) {
        const std::string plain = "\"&<>\n\x7F",
                          entities[] = {"&quot;", "&amp;", "&lt;", "&gt;", "&#x0A;", "&#x7F;"};
        const size_t at = plain.find(byte);
        escaped += at == std::string::npos ? std::string(1, byte) : entities[at];
    }
    return escaped;
}

TEST_F(Api, EachWriteSendsItsFieldsCutAndEscaped) {
    Recorder recorder;
    // Every field of every group takes each of these in turn, all of a write's fields at once.
    Texts values = {"",
                    "0",
                    "7",
                    "-1",
                    "256",
                    "65536",
                    "4294967296",
                    "abc",
                    "a\"b<c&d>e\\f'g\nh\x7F",
                    "\xE6\xB7\xB1\xE5\x9C\xB3 100%+1",
                    std::string(63, '"')};
    for (const int width : {15, 23, 31, 35, 63}) {
        values.push_back(std::string(static_cast<size_t>(width), 'w'));
        values.push_back(std::string(static_cast<size_t>(width) + 1, '8'));
        values.push_back(std::string(static_cast<size_t>(width) + 100, 'x'));
    }
    for (const Group& group : kGroups) {
        for (const std::string& value : values) {
            std::string body = group.fixed;
            std::string message = group.open;
            for (const std::string& row : Split(group.fields)) {
                const Field field(row);
                // What no number can be is left to the texts.
                const bool tooLong = field.kind == 'N' && value.size() > 18;
                const std::string sent = tooLong ? "12" : value;
                body += "&" + field.form + "=" + PercentEncode(sent);
                message += " " + field.attribute + "=\"" + Arrives(group, field, sent) + "\"";
            }
            message += group.close;
            Texts replies{SetReply(3)};
            Texts expected{Set(message)};
            if (group.asksVersion) {
                replies.insert(replies.begin(), QueryReply("<stVersion VideoCnt=\"1\"/>"));
                expected.insert(expected.begin(), Query("stVersion /"));
            }
            Texts datagrams;
            const Answer answer = Exchange(recorder, group.path, body, replies, &datagrams);
            // A refusal is no failure of the exchange.
            EXPECT_EQ(answer.chunks, Texts{"{\"result\": 1 }"});
            EXPECT_EQ(datagrams, expected) << group.path << " with " << value;
        }
    }
}

struct Write {
    const char* path;
    const char* body;
    const char* messages; // sent in turn, all refused
};

const Write kWrites[] = {
    {"/set_LangInfo", "strLanguage=CN", R"(<stDisplay strLanguage="CN" />)"},
    {"/set_LangInfo", "strLanguage=EN", R"(<stDisplay strLanguage="US" />)"},
    {"/set_LangInfo", "strLanguage=cn", R"(<stDisplay strLanguage="US" />)"},
    {"/set_LangInfo", "strLanguage=", ""},
    {"/set_LangInfo", "other=1", ""},
    {"/set_BaseInfo", "x=",
     R"(<stBaseInfo strFD_DeviceNo="" ucFD_TimeZone="0" ucFD_GpsSTFlag="0" )"
     R"(strFD_CurTime="" />)"},
    {"/set_BaseInfo?strFD_DeviceNo=query",
     "strFD_DeviceNo=BODY1&ucFD_GpsSTFlag=-3&ucFD_TimeZone="
     "9xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx",
     R"(<stBaseInfo strFD_DeviceNo="BODY1" ucFD_TimeZone="0" ucFD_GpsSTFlag="0" )"
     R"(strFD_CurTime="" />)"},
    {"/set_MirrorInfo", "strFD_UpDown=1-0&strFD_LeftRight=0-1",
     R"(<stVideoMirror><stVideoMirrorPara><VChn_0 ucFD_LeftRight="0" ucFD_UpDown="1"/>)"
     "</stVideoMirrorPara></stVideoMirror>"},
    {"/set_MirrorInfo", "strFD_UpDown=---&strFD_LeftRight=-5",
     R"(<stVideoMirror><stVideoMirrorPara><VChn_0 ucFD_LeftRight="1" ucFD_UpDown="0"/>)"
     "</stVideoMirrorPara></stVideoMirror>"},
    {"/set_VCmsInfo", "ucFD_AddressType=0&strFD_Address=198.51.100.2&usFD_Port=70000",
     R"(<stCMS ucFD_AddressType="0" uiFD_IP="192.0.2.2" usFD_Port="4464"/>)"},
    {"/set_VCmsInfo", "strFD_Address=abc",
     R"(<stCMS ucFD_AddressType="0" uiFD_IP="255.255.255.255" usFD_Port="0"/>)"},
    {"/set_VCmsInfo", "ucFD_AddressType=256&strFD_Address=203.0.113.9&usFD_Port=1",
     R"(<stCMS ucFD_AddressType="0" uiFD_IP="203.0.113.9" usFD_Port="1"/>)"},
    {"/set_VCmsInfo", "ucFD_AddressType=2&strFD_Address=198.51.100.2%26&usFD_Port=6608",
     R"(<stCMS ucFD_AddressType="2" strFD_Domain="198.51.100.2&amp;" usFD_Port="6608"/>)"},
    {"/set_WifiInfo", "x=",
     R"(<stWifi ucFD_WorkMode="0" strFD_SSID="" strFD_Passwd="" ucFD_AuthMode="0" )"
     R"(ucFD_CryptType="0" ucFD_DhcpEnableFlag="0"/>)"},
    {"/set_WifiInfo", "ucFD_WorkMode=2&strFD_SSID=ap&strFD_Passwd=key&ucFD_AuthMode=1",
     R"(<stWifi ucFD_WorkMode="2"/>|)"
     R"(<stWifiAp strFD_SSID="ap" strFD_Passwd="key" ucFD_AuthMode="1" ucFD_CryptType="0" )"
     R"(ucFD_DhcpEnableFlag="0"/>)"},
    {"/set_GNetInfo", "x=",
     R"(<stMobileGNet ucFD_NetType="0" strFD_Apn="" strFD_PhoneNo="" strFD_UserName="" )"
     R"(strFD_UserPasswd=""/>)"},
};

TEST_F(Api, WritesWithRulesOfTheirOwn) {
    Recorder recorder;
    for (const Write& write : kWrites) {
        Texts expected;
        for (const std::string& message : Split(write.messages))
            expected.push_back(Set(message));
        Texts datagrams;
        const Answer answer = Exchange(recorder, write.path, write.body,
                                       Texts(expected.size(), SetReply(3)), &datagrams);
        EXPECT_EQ(answer.body, "{\"result\": 1 }") << write.path << " " << write.body;
        EXPECT_EQ(datagrams, expected) << write.path << " " << write.body;
    }
}

TEST_F(Api, PacksTheGb28181SwitchAndReadsLensIdsBackwards) {
    Recorder recorder;
    const struct {
        const char* body;
        const char* channels;
        const char* enable;
        const char* lensId;
    } cases[] = {
        {"ucFD_GB28181Enable=1&ucFD_StreamType=0", "1", "1", ""},
        {"ucFD_StreamType=1", "1", "0", ""},
        {"ucFD_GB28181Enable=2&ucFD_StreamType=1", "1", "0", ""},
        {"strFD_LensId=*ABC*", "1", "0", "ABC"},
        {"strFD_LensId=*ABC", "1", "0", "AB"},
        {"strFD_LensId=*A*", "1", "0", ""},
        {"strFD_LensId=*A*B*", "2", "0", "A"},
        {"strFD_LensId=*A*B*", "1", "0", "B"},
        {"strFD_LensId=*A*B*C*D*", "0", "0", ""},
        {"strFD_LensId=*ABC*", "-2147483648", "0", ""},
        {"strFD_LensId=*ABC*", "2", "0", ""},
        {"strFD_LensId=text*ABC*", "1", "0", "ABC"},
        {"strFD_LensId=no+star", "1", "0", ""},
        {"strFD_LensId=*01234567890123456789012345678901234*", "1", "0",
         "0123456789012345678901234567890"},
    };
    for (const auto& each : cases) {
        Texts datagrams;
        Exchange(recorder, "/set_GB28181Info", each.body,
                 {QueryReply(std::string("<stVersion VideoCnt=\"") + each.channels + "\"/>"),
                  SetReply(3)},
                 &datagrams);
        EXPECT_EQ(datagrams.back(),
                  Set(std::string("<stGB28181 ucFD_Enable=\"") + each.enable +
                      "\" strFD_Manufacturer=\"\" strFD_ModelName=\"\" strFD_ServerIp=\"\" "
                      "usFD_ServerPort=\"0\" strFD_ServerID=\"\" strFD_DeviceId=\"\" "
                      "usFD_DevicePort=\"0\" strFD_DeviceUser=\"\" strFD_DevicePass=\"\">"
                      "<stGB28181SubID><SUBDEVID_0 strFD_LensId=\"" +
                      each.lensId + "\"/></stGB28181SubID></stGB28181>"))
            << each.body;
    }
}

// Whether a write counts as answered, and as carried out, by the recorder's answer to it.
TEST_F(Api, TellsWhetherTheRecorderAnswered) {
    Recorder recorder;
    const struct {
        const char* reply;
        const char* body;
        double least;
    } cases[] = {
        {R"(<VariCfgSec Action="DEVICE_SET" Result="3"/>)", R"({"result": 1 })", 0},
        {R"(<VariCfgSec Action="DEVICE_SET" Result="-1"/>)", R"({"result": 1 })", 0},
        {R"(<VariCfgSec Action="DEVICE_SET" Result="abc"/>)", R"({"result": 1 })", 1.9},
        {R"(<VariCfgSec Action="DEVICE_SET"/>)", R"({"result": 0 })", 0},
        {R"(<VariCfgSec Result="0" Action="DEVICE_SET"/>)", R"({"result": 0 })", 0},
        {"<VariCfgSec", R"({"result": 0 })", 0},
        {"", R"({"result": 0 })", 0},
    };
    for (const auto& each : cases) {
        const Answer answer = Exchange(recorder, "/set_NetWModeInfo", "x=y", {each.reply});
        EXPECT_EQ(answer.body, each.body) << each.reply;
        EXPECT_GE(answer.seconds, each.least) << each.reply;
        EXPECT_LT(answer.seconds, each.least + 1.5) << each.reply;
    }
    // An accepted work mode is the whole write: the access point's settings stay as they are.
    Texts datagrams;
    Exchange(recorder, "/set_WifiInfo", "ucFD_WorkMode=2&strFD_SSID=new", {SetReply(0)},
             &datagrams);
    EXPECT_EQ(datagrams, Texts{Set(R"(<stWifi ucFD_WorkMode="2"/>)")});
}

} // namespace
