// SPDX-License-Identifier: GPL-2.0-only
// Each API path: the datagrams that it sends and the chunks that it answers, byte for byte.

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

#include "tests/system/Daemon.h"
#include "tests/system/HttpClient.h"
#include "tests/system/Recorder.h"

namespace {

using Texts = std::vector<std::string>;

constexpr char kHead[] = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
// Stands for the daemon's own clock in an expected chunk.
constexpr char kClock[] = "YYYY-MM-DD hh:mm:ss";

class Api : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        Start();
    }
};

std::string Query(const std::string& element) {
    return "<VariCfgSec Action=\"DEVICE_QUERY\"><" + element + "></VariCfgSec>";
}

std::string Set(const std::string& element) {
    return "<VariCfgSec Action=\"DEVICE_SET\">" + element + "</VariCfgSec>";
}

// The clock in an answer becomes kClock once it is seen to tell the time.
void MaskClock(Texts& chunks) {
    for (std::string& chunk : chunks) {
        const size_t at = chunk.find("strFD_CurTime\": \"");
        if (at == std::string::npos)
            continue;
        tm told{};
        const char* text = chunk.c_str() + at + 17;
        ASSERT_NE(strptime(text, "%Y-%m-%d %H:%M:%S", &told), nullptr) << chunk;
        told.tm_isdst = -1;
        EXPECT_NEAR(static_cast<double>(mktime(&told)), static_cast<double>(time(nullptr)), 20);
        chunk.replace(at + 17, sizeof(kClock) - 1, kClock);
    }
}

struct Get {
    const char* path;
    Texts queries;     // element texts
    Texts replies;     // sections
    Texts chunks;      // without the last one, the result
    Texts failed = {}; // those after a failed exchange; empty: as `chunks`
};

const Get kGets[] = {
    {"/get_LangInfo",
     {"stDisplay"},
     {"<stDisplay strLanguage=\"CN\"/>"},
     {"{ \"strLanguage\": \"CN\""},
     {"{ \"strLanguage\": \"EN\""}},
    {"/get_LangInfo?lang=CN",
     {"stDisplay"},
     {"<stDisplay strLanguage=\"US\"/>"},
     {"{ \"strLanguage\": \"EN\""}},
    {"/get_BaseInfo",
     {"stBaseInfo"},
     {"<stBaseInfo strFD_DeviceNo=\"A&quot;B&lt;\\C&#x01;\" UCFD_TIMEZONE=\"-1\" "
      "ucFD_GpsSTFlag=\"300\" strFD_CurTime=\"never shown\"/>"},
     {"{ \"strFD_DeviceNo\": \"A\\\"B\\u003c\\\\C\\u0001\"", ", \"ucFD_TimeZone\": \"255\" ",
      ", \"ucFD_GpsSTFlag\": \"44\"", ", \"strFD_CurTime\": \"YYYY-MM-DD hh:mm:ss\""},
     {"{ \"strFD_DeviceNo\": \"\"", ", \"ucFD_TimeZone\": \"0\" ", ", \"ucFD_GpsSTFlag\": \"0\"",
      ", \"strFD_CurTime\": \"YYYY-MM-DD hh:mm:ss\""}},
    {"/get_MirrorInfo",
     {"stVideoMirror"},
     {"<stVideoMirror><stVideoMirrorPara><VChn_0 ucFD_LeftRight=\"3\" ucFD_UpDown=\"4\"/>"
      "</stVideoMirrorPara></stVideoMirror>"},
     {"{ \"strFD_LeftRight\": \"3\"", ", \"strFD_UpDown\": \"4\""},
     {"{ \"strFD_LeftRight\": \"0\"", ", \"strFD_UpDown\": \"0\""}},
    {"/get_NetWModeInfo",
     {"stNetWorkMode"},
     {"<stNetWorkMode ucFD_NetType=\"2\" usFD_GPSInterval=\"70000\"/>"},
     {"{ \"ucFD_NetWType\": \"2\"", ", \"usFD_GPSInterval\": \"4464\""},
     {"{ \"ucFD_NetWType\": \"0\"", ", \"usFD_GPSInterval\": \"0\""}},
    {"/get_VCmsInfo",
     {"stCMS"},
     {"<stCMS ucFD_AddressType=\"0\" uiFD_IP=\"192.0.2.3\" strFD_Domain=\"d\" "
      "usFD_Port=\"6608\"/>"},
     {"{ \"ucFD_AddressType\": \"0\"", ", \"strFD_Address\": \"203.0.113.3\"",
      ", \"usFD_Port\": \"6608\""},
     {"{ \"ucFD_AddressType\": \"0\"", ", \"strFD_Address\": \"0.0.0.0\"",
      ", \"usFD_Port\": \"0\""}},
    {"/get_VCmsInfo",
     {"stCMS"},
     {"<stCMS uiFD_IP=\"0x0100007f\"/>"},
     {"{ \"ucFD_AddressType\": \"0\"", ", \"strFD_Address\": \"127.0.0.1\"",
      ", \"usFD_Port\": \"0\""}},
    {"/get_VCmsInfo",
     {"stCMS"},
     {"<stCMS ucFD_AddressType=\"2\" uiFD_IP=\"192.0.2.3\" strFD_Domain=\"192.0.2.1\"/>"},
     {"{ \"ucFD_AddressType\": \"2\"", ", \"strFD_Address\": \"192.0.2.1\"",
      ", \"usFD_Port\": \"0\""}},
    {"/get_WifiInfo",
     {"stWifi"},
     {"<stWifi ucFD_WorkMode=\"1\" strFD_SSID=\"\xE6\xB7\xB1\xE5\x9C\xB3 \xF0\x9F\x9A\x8C\" "
      "strFD_Passwd=\"\xE6\xB7\" ucFD_AuthMode=\"2\" ucFD_CryptType=\"3\" "
      "ucFD_DhcpEnableFlag=\"4\"/>"},
     {"{ \"ucFD_WorkMode\": \"1\"",
      ", \"strFD_SSID\": \"\xE6\xB7\xB1\xE5\x9C\xB3 \xF0\x9F\x9A\x8C\"",
      ", \"strFD_Passwd\": \"\\ufffd\\ufffd\"", ", \"ucFD_AuthMode\": \"2\"",
      ", \"ucFD_CryptType\": \"3\"", ", \"ucFD_DhcpEnableFlag\": \"4\""},
     {"{ \"ucFD_WorkMode\": \"0\"", ", \"strFD_SSID\": \"\"", ", \"strFD_Passwd\": \"\"",
      ", \"ucFD_AuthMode\": \"0\"", ", \"ucFD_CryptType\": \"0\"",
      ", \"ucFD_DhcpEnableFlag\": \"0\""}},
    {"/get_WifiInfo",
     {"stWifi", "stWifiAp"},
     {"<stWifi ucFD_WorkMode=\"2\" strFD_SSID=\"client\" ucFD_AuthMode=\"7\"/>",
      "<stWifiAp strFD_SSID=\"ap\" strFD_Passwd=\"key\" ucFD_AuthMode=\"2\" ucFD_CryptType=\"3\" "
      "ucFD_DhcpEnableFlag=\"1\"/>"},
     {"{ \"ucFD_WorkMode\": \"2\"", ", \"strFD_SSID\": \"ap\"", ", \"strFD_Passwd\": \"key\"",
      ", \"ucFD_AuthMode\": \"2\"", ", \"ucFD_CryptType\": \"3\"",
      ", \"ucFD_DhcpEnableFlag\": \"1\""},
     // Only the second query fails: the client's values stay.
     {"{ \"ucFD_WorkMode\": \"2\"", ", \"strFD_SSID\": \"client\"", ", \"strFD_Passwd\": \"\"",
      ", \"ucFD_AuthMode\": \"7\"", ", \"ucFD_CryptType\": \"0\"",
      ", \"ucFD_DhcpEnableFlag\": \"0\""}},
    {"/get_GNetInfo",
     {"stMobileGNet"},
     {"<stMobileGNet ucFD_NetType=\"6\" strFD_Apn=\"apn\" strFD_PhoneNo=\"*99#\" "
      "strFD_UserName=\"user\" strFD_UserPasswd=\"secret\"/>"},
     {"{ \"ucFD_NetType\": \"6\"", ", \"strFD_Apn\": \"apn\"", ", \"strFD_PhoneNo\": \"*99#\"",
      ", \"strFD_UserName\": \"user\"", ", \"strFD_UserPasswd\": \"secret\""},
     {"{ \"ucFD_NetType\": \"0\"", ", \"strFD_Apn\": \"\"", ", \"strFD_PhoneNo\": \"\"",
      ", \"strFD_UserName\": \"\"", ", \"strFD_UserPasswd\": \"\""}},
    {"/get_GB28181Info",
     {"stGB28181", "stVersion /"},
     {"<stGB28181 ucFD_Enable=\"129\" strFD_Manufacturer=\"mf\" strFD_ModelName=\"mn\" "
      "strFD_ServerIp=\"si\" usFD_ServerPort=\"5060\" strFD_ServerID=\"sd\" strFD_DeviceId=\"di\" "
      "usFD_DevicePort=\"5061\" strFD_DeviceUser=\"du\" strFD_DevicePass=\"dp\"><stGB28181SubID>"
      "<SUBDEVID_0 strFD_LensId=\"0123456789012345678901234567890123\"/></stGB28181SubID>"
      "</stGB28181>",
      "<stVersion VideoCnt=\"4\"/>"},
     {"{ \"ucFD_GB28181Enable\": \"1\"", ", \"strFD_Manufacturer\": \"mf\"",
      ", \"strFD_ModelName\": \"mn\"", ", \"strFD_ServerIp\": \"si\"",
      ", \"usFD_ServerPort\": \"5060\"", ", \"strFD_ServerID\": \"sd\"",
      ", \"strFD_DeviceId\": \"di\"", ", \"usFD_DevicePort\": \"5061\"",
      ", \"strFD_DeviceUser\": \"du\"", ", \"strFD_DevicePass\": \"dp\"",
      ", \"strFD_LensId\": \"*01234567890123456789012345678901*\"", ", \"iVideoChnCount\": \"4\"",
      ", \"ucFD_StreamType\": \"1\""},
     {}},
    {"/get_VersionInfo",
     {"stVersion /"},
     {"<stVersion strAppVer=\"A1\"/>"},
     {"{ \"strFD_AppVersion\": \"A1\""},
     {"{ \"strFD_AppVersion\": \"\""}},
    {"/get_SystemInfo",
     {"stSystemInfo /"},
     {"<stSystemInfo GpsExist=\"1\" GpsPos=\"gp\" GNetExist=\"2\" IMEI=\"im\" "
      "ATI=\"x Revision: r1&#x0D;&#x0A;OK\" SimExist=\"3\" IMSI=\"is\" ICCID=\"ic\" "
      "GNetSignal=\"-1\" GNetDail=\"4\" WifiExist=\"5\" WifiMode=\"1\" WifiSignal=\"70000\" "
      "WifiDail=\"6\" CmsStatus=\"7\" JTT808Status=\"8\" GB28181Status=\"9\" Disk1Exist=\"10\" "
      "Disk1Size=\"d1\" Disk2Exist=\"11\" Disk2Size=\"d2\" Disk3Exist=\"12\" IO=\"io\" "
      "McuVer=\"v1\" BootVer=\"v2\" KnlVer=\"v3\" RfsVer=\"v4\" AppVer=\"v5\" DBVer=\"v6\" "
      "ACC=\"13\"/>"},
     {"{ ",
      "\"gps\":{ \"ucFD_GpsExist\": \"1\"",
      ", \"strFD_GpsPos\": \"gp\"},",
      "\"gnet\":{ \"ucFD_GNetExist\": \"2\"",
      ", \"strFD_GNetIMEI\": \"im\"",
      ", \"strFD_GNetRevision\": \" r1\"",
      ", \"ucFD_SimExist\": \"3\"",
      ", \"ucFD_SimIMSI\": \"is\"",
      ", \"ucFD_SimICCID\": \"ic\"",
      ", \"uiFD_GNetSignal\": \"-1\"",
      ", \"ucFD_GNetDail\": \"4\"},",
      "\"wifi\":{ \"ucFD_WifiExist\": \"5\"",
      ", \"ucFD_WifiMode\": \"Client\"",
      ", \"uiFD_WifiSignal\": \"70000\"",
      ", \"ucFD_WifiDail\": \"6\"},",
      "\"cms\":{ \"ucFD_CmsStatus\": \"7\"",
      ", \"ucFD_JTT808Status\": \"8\"",
      ", \"ucFD_GB28181Status\": \"9\"},",
      "\"disk\":{",
      "\"list\":[",
      "{\"ucFD_DiskExist\": \"10\"",
      ", \"strFD_DiskSize\": \"d1\"},",
      "{\"ucFD_DiskExist\": \"11\"",
      ", \"strFD_DiskSize\": \"d2\"}",
      "]},",
      "\"io\":{ \"strFD_IOStatus\": \"io\"},",
      "\"version\":{ \"strFD_McuVersion\": \"v1\"",
      ", \"strFD_LdrVersion\": \"v2\"",
      ", \"strFD_KnlVersion\": \"v3\"",
      ", \"strFD_RfsVersion\": \"v4\"",
      ", \"strFD_AppVersion\": \"v5\"",
      ", \"strFD_DbtVersion\": \"v6\"},",
      "\"acc\":{ \"ucFD_AccStatus\": \"13\"},"},
     {"{ ",
      "\"gps\":{ \"ucFD_GpsExist\": \"0\"",
      ", \"strFD_GpsPos\": \"\"},",
      "\"gnet\":{ \"ucFD_GNetExist\": \"0\"",
      ", \"strFD_GNetIMEI\": \"\"",
      ", \"strFD_GNetRevision\": \"\"",
      ", \"ucFD_SimExist\": \"0\"",
      ", \"ucFD_SimIMSI\": \"\"",
      ", \"ucFD_SimICCID\": \"\"",
      ", \"uiFD_GNetSignal\": \"0\"",
      ", \"ucFD_GNetDail\": \"0\"},",
      "\"wifi\":{ \"ucFD_WifiExist\": \"0\"",
      ", \"ucFD_WifiMode\": \"AP\"",
      ", \"uiFD_WifiSignal\": \"0\"",
      ", \"ucFD_WifiDail\": \"0\"},",
      "\"cms\":{ \"ucFD_CmsStatus\": \"0\"",
      ", \"ucFD_JTT808Status\": \"0\"",
      ", \"ucFD_GB28181Status\": \"0\"},",
      "\"disk\":{",
      "\"list\":[",
      "{\"ucFD_DiskExist\": \"0\"",
      ", \"strFD_DiskSize\": \"\"},",
      "{\"ucFD_DiskExist\": \"0\"",
      ", \"strFD_DiskSize\": \"\"}",
      "]},",
      "\"io\":{ \"strFD_IOStatus\": \"\"},",
      "\"version\":{ \"strFD_McuVersion\": \"\"",
      ", \"strFD_LdrVersion\": \"\"",
      ", \"strFD_KnlVersion\": \"\"",
      ", \"strFD_RfsVersion\": \"\"",
      ", \"strFD_AppVersion\": \"\"",
      ", \"strFD_DbtVersion\": \"\"},",
      "\"acc\":{ \"ucFD_AccStatus\": \"0\"},"}},
};

TEST_F(Api, EachGetAnswersWhatTheRecorderSaysOrNothing) {
    Recorder recorder;
    for (const Get& get : kGets) {
        Texts expectedDatagrams;
        for (const std::string& element : get.queries)
            expectedDatagrams.push_back(Query(element));
        Texts replies;
        for (const std::string& section : get.replies)
            replies.push_back(QueryReply(section));

        const auto check = [&](Texts chunks, int result) {
            chunks.push_back((chunks.back().back() == ',' ? "" : ", ") +
                             ("\"result\": " + std::to_string(result) + " }"));
            Texts datagrams;
            Answer answer = Exchange(recorder, get.path, "", replies, &datagrams);
            MaskClock(answer.chunks);
            EXPECT_EQ(answer.head, kHead);
            EXPECT_EQ(answer.chunks, chunks) << get.path;
            EXPECT_EQ(datagrams, expectedDatagrams) << get.path;
        };
        check(get.chunks, 1);
        if (!get.failed.empty()) {
            replies.back() = "no XML";
            check(get.failed, 0);
        }
    }
}

TEST_F(Api, ASilentRecorderCostsFiveSecondsAnExchange) {
    HttpClient client;
    client.Send(Request("/get_GB28181Info"));
    const Answer answer = client.Read();
    EXPECT_EQ(answer.body,
              "{ \"ucFD_GB28181Enable\": \"0\", \"strFD_Manufacturer\": \"\", \"strFD_ModelName\": "
              "\"\", \"strFD_ServerIp\": \"\", \"usFD_ServerPort\": \"0\", \"strFD_ServerID\": "
              "\"\", \"strFD_DeviceId\": \"\", \"usFD_DevicePort\": \"0\", \"strFD_DeviceUser\": "
              "\"\", \"strFD_DevicePass\": \"\", \"strFD_LensId\": \"**\", \"iVideoChnCount\": "
              "\"0\", \"ucFD_StreamType\": \"0\", \"result\": 0 }");
    EXPECT_NEAR(answer.seconds, 10, 0.6);
    client.Send(Request("/set_MirrorInfo", "x=y"));
    EXPECT_EQ(client.Read().body, "{\"result\": 0 }");
}

// A write's fields, as the tools send them and as they arrive. `limit` is the most bytes of a
// text, or the bits of a number.
struct Field {
    const char* form;
    const char* attribute;
    enum { Number, Text } kind;
    int limit;
};

struct Group {
    const char* path;
    const char* open;
    std::vector<Field> fields;
    const char* close;
    int buffer;        // most bytes of a value that the form reader takes
    bool asksVersion;  // queries the channel count before the write
    const char* fixed; // form fields beside the table's
};

const Group kGroups[] = {
    {"/set_NetWModeInfo",
     "<stNetWorkMode",
     {{"ucFD_NetWType", "ucFD_NetType", Field::Number, 8},
      {"usFD_GPSInterval", "usFD_GPSInterval", Field::Number, 16}},
     "/>",
     63,
     false,
     ""},
    {"/set_WifiInfo",
     "<stWifi ucFD_WorkMode=\"1\"",
     {{"strFD_SSID", "strFD_SSID", Field::Text, 31},
      {"strFD_Passwd", "strFD_Passwd", Field::Text, 31},
      {"ucFD_AuthMode", "ucFD_AuthMode", Field::Number, 8},
      {"ucFD_CryptType", "ucFD_CryptType", Field::Number, 8},
      {"ucFD_DhcpEnableFlag", "ucFD_DhcpEnableFlag", Field::Number, 8}},
     "/>",
     63,
     false,
     "ucFD_WorkMode=257"},
    {"/set_GNetInfo",
     "<stMobileGNet",
     {{"ucFD_NetType", "ucFD_NetType", Field::Number, 8},
      {"strFD_Apn", "strFD_Apn", Field::Text, 31},
      {"strFD_PhoneNo", "strFD_PhoneNo", Field::Text, 23},
      {"strFD_UserName", "strFD_UserName", Field::Text, 35},
      {"strFD_UserPasswd", "strFD_UserPasswd", Field::Text, 35}},
     "/>",
     63,
     false,
     ""},
    {"/set_GB28181Info",
     "<stGB28181 ucFD_Enable=\"129\"",
     {{"strFD_Manufacturer", "strFD_Manufacturer", Field::Text, 31},
      {"strFD_ModelName", "strFD_ModelName", Field::Text, 31},
      {"strFD_ServerIp", "strFD_ServerIp", Field::Text, 31},
      {"usFD_ServerPort", "usFD_ServerPort", Field::Number, 16},
      {"strFD_ServerID", "strFD_ServerID", Field::Text, 31},
      {"strFD_DeviceId", "strFD_DeviceId", Field::Text, 31},
      {"usFD_DevicePort", "usFD_DevicePort", Field::Number, 16},
      {"strFD_DeviceUser", "strFD_DeviceUser", Field::Text, 31},
      {"strFD_DevicePass", "strFD_DevicePass", Field::Text, 31}},
     "><stGB28181SubID><SUBDEVID_0 strFD_LensId=\"L1\"/></stGB28181SubID></stGB28181>",
     511,
     true,
     "ucFD_GB28181Enable=3&ucFD_StreamType=5&strFD_LensId=*L1*"},
    // A number too long for the form reader counts as absent here.
    {"/set_BaseInfo",
     "<stBaseInfo",
     {{"strFD_DeviceNo", "strFD_DeviceNo", Field::Text, 15},
      {"ucFD_TimeZone", "ucFD_TimeZone", Field::Number, 8}},
     " ucFD_GpsSTFlag=\"1\" strFD_CurTime=\"2026-01-02 03:04:05\" />",
     63,
     false,
     "ucFD_GpsSTFlag=5&strFD_CurTime=2026-01-02+03:04:05"},
};

std::string PercentEncode(const std::string& value) {
    std::string encoded;
    for (const unsigned char byte : value) {
        char text[4];
        snprintf(text, sizeof(text), "%%%02X", byte);
        encoded += text;
    }
    return encoded;
}

// What a value is on the wire.
std::string Arrives(const Group& group, const Field& field, const std::string& value) {
    const std::string read = value.substr(0, static_cast<size_t>(group.buffer));
    if (field.kind == Field::Number) {
        const auto number = static_cast<uint32_t>(strtoll(read.c_str(), nullptr, 10));
        return std::to_string(number & ((1u << field.limit) - 1));
    }
    std::string escaped;
    for (const char byte : read.substr(0, static_cast<size_t>(field.limit))) {
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
            for (const Field& field : group.fields) {
                // What no number can be is left to the texts.
                const bool tooLong = field.kind == Field::Number && value.size() > 18;
                const std::string sent = tooLong ? "12" : value;
                body += std::string("&") + field.form + "=" + PercentEncode(sent);
                message +=
                    std::string(" ") + field.attribute + "=\"" + Arrives(group, field, sent) + "\"";
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
    Texts messages; // sent in turn; all but the last are refused
};

const Write kWrites[] = {
    {"/set_LangInfo", "strLanguage=CN", {"<stDisplay strLanguage=\"CN\" />"}},
    {"/set_LangInfo", "strLanguage=EN", {"<stDisplay strLanguage=\"US\" />"}},
    {"/set_LangInfo", "strLanguage=cn", {"<stDisplay strLanguage=\"US\" />"}},
    {"/set_LangInfo", "strLanguage=", {}},
    {"/set_LangInfo", "other=1", {}},
    {"/set_BaseInfo",
     "x=",
     {"<stBaseInfo strFD_DeviceNo=\"\" ucFD_TimeZone=\"0\" ucFD_GpsSTFlag=\"0\" "
      "strFD_CurTime=\"\" />"}},
    {"/set_BaseInfo?strFD_DeviceNo=query",
     "strFD_DeviceNo=BODY1&ucFD_GpsSTFlag=-3&ucFD_TimeZone="
     "0000000000000000000000000000000000000000000000000000000000000000000000009",
     {"<stBaseInfo strFD_DeviceNo=\"BODY1\" ucFD_TimeZone=\"0\" ucFD_GpsSTFlag=\"0\" "
      "strFD_CurTime=\"\" />"}},
    {"/set_MirrorInfo",
     "strFD_UpDown=1-0&strFD_LeftRight=0-1",
     {"<stVideoMirror><stVideoMirrorPara><VChn_0 ucFD_LeftRight=\"0\" ucFD_UpDown=\"1\"/>"
      "</stVideoMirrorPara></stVideoMirror>"}},
    {"/set_MirrorInfo",
     "strFD_UpDown=---&strFD_LeftRight=-5",
     {"<stVideoMirror><stVideoMirrorPara><VChn_0 ucFD_LeftRight=\"1\" ucFD_UpDown=\"0\"/>"
      "</stVideoMirrorPara></stVideoMirror>"}},
    {"/set_VCmsInfo",
     "ucFD_AddressType=0&strFD_Address=198.51.100.2&usFD_Port=70000",
     {"<stCMS ucFD_AddressType=\"0\" uiFD_IP=\"192.0.2.2\" usFD_Port=\"4464\"/>"}},
    {"/set_VCmsInfo",
     "strFD_Address=abc",
     {"<stCMS ucFD_AddressType=\"0\" uiFD_IP=\"255.255.255.255\" usFD_Port=\"0\"/>"}},
    {"/set_VCmsInfo",
     "ucFD_AddressType=256&strFD_Address=203.0.113.9&usFD_Port=1",
     {"<stCMS ucFD_AddressType=\"0\" uiFD_IP=\"203.0.113.9\" usFD_Port=\"1\"/>"}},
    {"/set_VCmsInfo",
     "ucFD_AddressType=2&strFD_Address=198.51.100.2%26&usFD_Port=6608",
     {"<stCMS ucFD_AddressType=\"2\" strFD_Domain=\"198.51.100.2&amp;\" usFD_Port=\"6608\"/>"}},
    {"/set_WifiInfo",
     "x=",
     {"<stWifi ucFD_WorkMode=\"0\" strFD_SSID=\"\" strFD_Passwd=\"\" ucFD_AuthMode=\"0\" "
      "ucFD_CryptType=\"0\" ucFD_DhcpEnableFlag=\"0\"/>"}},
    {"/set_WifiInfo",
     "ucFD_WorkMode=2&strFD_SSID=ap&strFD_Passwd=key&ucFD_AuthMode=1",
     {"<stWifi ucFD_WorkMode=\"2\"/>",
      "<stWifiAp strFD_SSID=\"ap\" strFD_Passwd=\"key\" ucFD_AuthMode=\"1\" ucFD_CryptType=\"0\" "
      "ucFD_DhcpEnableFlag=\"0\"/>"}},
    {"/set_GNetInfo",
     "x=",
     {"<stMobileGNet ucFD_NetType=\"0\" strFD_Apn=\"\" strFD_PhoneNo=\"\" strFD_UserName=\"\" "
      "strFD_UserPasswd=\"\"/>"}},
};

TEST_F(Api, WritesWithRulesOfTheirOwn) {
    Recorder recorder;
    for (const Write& write : kWrites) {
        Texts expected;
        for (const std::string& message : write.messages)
            expected.push_back(Set(message));
        Texts datagrams;
        const Answer answer = Exchange(recorder, write.path, write.body,
                                       Texts(write.messages.size(), SetReply(3)), &datagrams);
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
        {"<VariCfgSec Action=\"DEVICE_SET\" Result=\"3\"/>", "{\"result\": 1 }", 0},
        {"<VariCfgSec Action=\"DEVICE_SET\" Result=\"-1\"/>", "{\"result\": 1 }", 0},
        {"<VariCfgSec Action=\"DEVICE_SET\" Result=\"abc\"/>", "{\"result\": 1 }", 1.9},
        {"<VariCfgSec Action=\"DEVICE_SET\"/>", "{\"result\": 0 }", 0},
        {"<VariCfgSec Result=\"0\" Action=\"DEVICE_SET\"/>", "{\"result\": 0 }", 0},
        {"<VariCfgSec", "{\"result\": 0 }", 0},
        {"", "{\"result\": 0 }", 0},
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
    EXPECT_EQ(datagrams, Texts{Set("<stWifi ucFD_WorkMode=\"2\"/>")});
}

} // namespace
