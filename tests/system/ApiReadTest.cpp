// SPDX-License-Identifier: GPL-2.0-only
// Each path that reads: the datagrams that it sends and the chunks that it answers, byte for byte.

#include <algorithm>
#include <ctime>
#include <gtest/gtest.h>

#include "tests/system/Api.h"

namespace {

constexpr char kHead[] = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
// Stands for the daemon's own clock in an expected chunk.
constexpr char kClock[] = "YYYY-MM-DD hh:mm:ss";

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

// One read.
struct Get {
    const char* path;
    const char* queries; // element texts
    const char* replies; // sections
    const char* chunks;  // without the last one, the result
    const char* failed;  // those after a failed last exchange; empty: `chunks` without values
};

const Get kGets[] = {
    {"/get_LangInfo", "stDisplay", R"(<stDisplay strLanguage="CN"/>)", R"({ "strLanguage": "CN")",
     R"({ "strLanguage": "EN")"},
    {"/get_LangInfo?lang=CN", "stDisplay", R"(<stDisplay strLanguage="US"/>)",
     R"({ "strLanguage": "EN")", R"({ "strLanguage": "EN")"},
    {"/get_BaseInfo", "stBaseInfo",
     R"(<stBaseInfo strFD_DeviceNo="A&quot;B&lt;\C&#x01;" UCFD_TIMEZONE="-1" )"
     R"(ucFD_GpsSTFlag="300" strFD_CurTime="never shown"/>)",
     R"({ "strFD_DeviceNo": "A\"B\u003c\\C\u0001"|, "ucFD_TimeZone": "255" |)"
     R"(, "ucFD_GpsSTFlag": "44"|, "strFD_CurTime": "YYYY-MM-DD hh:mm:ss")",
     R"({ "strFD_DeviceNo": ""|, "ucFD_TimeZone": "0" |)"
     R"(, "ucFD_GpsSTFlag": "0"|, "strFD_CurTime": "YYYY-MM-DD hh:mm:ss")"},
    {"/get_MirrorInfo", "stVideoMirror",
     R"(<stVideoMirror><stVideoMirrorPara><VChn_0 ucFD_LeftRight="3" ucFD_UpDown="4"/>)"
     R"(</stVideoMirrorPara></stVideoMirror>)",
     R"({ "strFD_LeftRight": "3"|, "strFD_UpDown": "4")", ""},
    {"/get_NetWModeInfo", "stNetWorkMode",
     R"(<stNetWorkMode ucFD_NetType="2" usFD_GPSInterval="70000"/>)",
     R"({ "ucFD_NetWType": "2"|, "usFD_GPSInterval": "4464")", ""},
    {"/get_VCmsInfo", "stCMS",
     R"(<stCMS ucFD_AddressType="0" uiFD_IP="192.0.2.3" strFD_Domain="d" usFD_Port="6608"/>)",
     R"({ "ucFD_AddressType": "0"|, "strFD_Address": "203.0.113.3"|, "usFD_Port": "6608")",
     R"({ "ucFD_AddressType": "0"|, "strFD_Address": "0.0.0.0"|, "usFD_Port": "0")"},
    {"/get_VCmsInfo", "stCMS", R"(<stCMS uiFD_IP="0x0100007f"/>)",
     R"({ "ucFD_AddressType": "0"|, "strFD_Address": "127.0.0.1"|, "usFD_Port": "0")",
     R"({ "ucFD_AddressType": "0"|, "strFD_Address": "0.0.0.0"|, "usFD_Port": "0")"},
    {"/get_VCmsInfo", "stCMS",
     R"(<stCMS ucFD_AddressType="2" uiFD_IP="192.0.2.3" strFD_Domain="192.0.2.1"/>)",
     R"({ "ucFD_AddressType": "2"|, "strFD_Address": "192.0.2.1"|, "usFD_Port": "0")",
     R"({ "ucFD_AddressType": "0"|, "strFD_Address": "0.0.0.0"|, "usFD_Port": "0")"},
    {"/get_WifiInfo", "stWifi",
     "<stWifi ucFD_WorkMode=\"1\" strFD_SSID=\"\xE6\xB7\xB1\xE5\x9C\xB3 \xF0\x9F\x9A\x8C\" "
     "strFD_Passwd=\"\xE6\xB7\" ucFD_AuthMode=\"2\" ucFD_CryptType=\"3\" "
     "ucFD_DhcpEnableFlag=\"4\"/>",
     "{ \"ucFD_WorkMode\": \"1\"|, \"strFD_SSID\": \"\xE6\xB7\xB1\xE5\x9C\xB3 \xF0\x9F\x9A\x8C\"|"
     R"(, "strFD_Passwd": "\ufffd\ufffd"|, "ucFD_AuthMode": "2"|, "ucFD_CryptType": "3"|)"
     R"(, "ucFD_DhcpEnableFlag": "4")",
     R"({ "ucFD_WorkMode": "0"|, "strFD_SSID": ""|, "strFD_Passwd": ""|, "ucFD_AuthMode": "0"|)"
     R"(, "ucFD_CryptType": "0"|, "ucFD_DhcpEnableFlag": "0")"},
    // When only the second query fails the client's values stay.
    {"/get_WifiInfo", "stWifi|stWifiAp",
     R"(<stWifi ucFD_WorkMode="2" strFD_SSID="client" ucFD_AuthMode="7"/>|)"
     R"(<stWifiAp strFD_SSID="ap" strFD_Passwd="key" ucFD_AuthMode="2" ucFD_CryptType="3" )"
     R"(ucFD_DhcpEnableFlag="1"/>)",
     R"({ "ucFD_WorkMode": "2"|, "strFD_SSID": "ap"|, "strFD_Passwd": "key"|)"
     R"(, "ucFD_AuthMode": "2"|, "ucFD_CryptType": "3"|, "ucFD_DhcpEnableFlag": "1")",
     R"({ "ucFD_WorkMode": "2"|, "strFD_SSID": "client"|, "strFD_Passwd": ""|)"
     R"(, "ucFD_AuthMode": "7"|, "ucFD_CryptType": "0"|, "ucFD_DhcpEnableFlag": "0")"},
    {"/get_GNetInfo", "stMobileGNet",
     R"(<stMobileGNet ucFD_NetType="6" strFD_Apn="apn" strFD_PhoneNo="*99#" )"
     R"(strFD_UserName="user" strFD_UserPasswd="secret"/>)",
     R"({ "ucFD_NetType": "6"|, "strFD_Apn": "apn"|, "strFD_PhoneNo": "*99#"|)"
     R"(, "strFD_UserName": "user"|, "strFD_UserPasswd": "secret")",
     ""},
    {"/get_GB28181Info", "stGB28181|stVersion /",
     R"(<stGB28181 ucFD_Enable="129" strFD_Manufacturer="mf" strFD_ModelName="mn" )"
     R"(strFD_ServerIp="si" usFD_ServerPort="5060" strFD_ServerID="sd" strFD_DeviceId="di" )"
     R"(usFD_DevicePort="5061" strFD_DeviceUser="du" strFD_DevicePass="dp"><stGB28181SubID>)"
     R"(<SUBDEVID_0 strFD_LensId="0123456789012345678901234567890123"/></stGB28181SubID>)"
     R"(</stGB28181>|<stVersion VideoCnt="4"/>)",
     R"({ "ucFD_GB28181Enable": "1"|, "strFD_Manufacturer": "mf"|, "strFD_ModelName": "mn"|)"
     R"(, "strFD_ServerIp": "si"|, "usFD_ServerPort": "5060"|, "strFD_ServerID": "sd"|)"
     R"(, "strFD_DeviceId": "di"|, "usFD_DevicePort": "5061"|, "strFD_DeviceUser": "du"|)"
     R"(, "strFD_DevicePass": "dp"|, "strFD_LensId": "*01234567890123456789012345678901*"|)"
     R"(, "iVideoChnCount": "4"|, "ucFD_StreamType": "1")",
     nullptr}, // the channel count's failure is not told
    {"/get_VersionInfo", "stVersion /", R"(<stVersion strAppVer="A1"/>)",
     R"({ "strFD_AppVersion": "A1")", R"({ "strFD_AppVersion": "")"},
    {"/get_SystemInfo", "stSystemInfo /",
     R"(<stSystemInfo GpsExist="1" GpsPos="gp" GNetExist="2" IMEI="im" )"
     R"(ATI="x Revision: r1&#x0D;&#x0A;OK" SimExist="3" IMSI="is" ICCID="ic" GNetSignal="-1" )"
     R"(GNetDail="4" WifiExist="5" WifiMode="1" WifiSignal="70000" WifiDail="6" CmsStatus="7" )"
     R"(JTT808Status="8" GB28181Status="9" Disk1Exist="10" Disk1Size="d1" Disk2Exist="11" )"
     R"(Disk2Size="d2" Disk3Exist="12" IO="io" McuVer="v1" BootVer="v2" KnlVer="v3" RfsVer="v4" )"
     R"(AppVer="v5" DBVer="v6" ACC="13"/>)",
     R"({ |"gps":{ "ucFD_GpsExist": "1"|, "strFD_GpsPos": "gp"},|)"
     R"("gnet":{ "ucFD_GNetExist": "2"|, "strFD_GNetIMEI": "im"|, "strFD_GNetRevision": " r1"|)"
     R"(, "ucFD_SimExist": "3"|, "ucFD_SimIMSI": "is"|, "ucFD_SimICCID": "ic"|)"
     R"(, "uiFD_GNetSignal": "-1"|, "ucFD_GNetDail": "4"},|)"
     R"("wifi":{ "ucFD_WifiExist": "5"|, "ucFD_WifiMode": "Client"|, "uiFD_WifiSignal": "70000"|)"
     R"(, "ucFD_WifiDail": "6"},|"cms":{ "ucFD_CmsStatus": "7"|, "ucFD_JTT808Status": "8"|)"
     R"(, "ucFD_GB28181Status": "9"},|"disk":{|"list":[|{"ucFD_DiskExist": "10"|)"
     R"(, "strFD_DiskSize": "d1"},|{"ucFD_DiskExist": "11"|, "strFD_DiskSize": "d2"}|]},|)"
     R"("io":{ "strFD_IOStatus": "io"},|"version":{ "strFD_McuVersion": "v1"|)"
     R"(, "strFD_LdrVersion": "v2"|, "strFD_KnlVersion": "v3"|, "strFD_RfsVersion": "v4"|)"
     R"(, "strFD_AppVersion": "v5"|, "strFD_DbtVersion": "v6"},|"acc":{ "ucFD_AccStatus": "13"},)",
     ""},
};

// The chunks of a zeroed record: numbers 0, texts empty, the Wi-Fi mode "AP".
std::string WithoutValues(std::string chunks) {
    const std::string opening = "\": \"";
    for (size_t at = 0; (at = chunks.find(opening, at)) != std::string::npos;) {
        at += opening.size();
        const size_t length = chunks.find('"', at) - at;
        const bool number = chunks.find_first_not_of("-0123456789", at) == at + length;
        const bool mode = chunks.compare(at, length, "Client") == 0;
        chunks.replace(at, length, number ? "0" : mode ? "AP" : "");
    }
    return chunks;
}

TEST_F(Api, EachGetAnswersWhatTheRecorderSaysOrNothing) {
    Recorder recorder;
    for (const Get& get : kGets) {
        Texts queries = Split(get.queries);
        std::transform(queries.begin(), queries.end(), queries.begin(), Query);
        Texts replies = Split(get.replies);
        std::transform(replies.begin(), replies.end(), replies.begin(), QueryReply);

        const auto check = [&](const std::string& list, int result) {
            Texts chunks = Split(list);
            chunks.push_back((chunks.back().back() == ',' ? "" : ", ") +
                             ("\"result\": " + std::to_string(result) + " }"));
            Texts datagrams;
            Answer answer = Exchange(recorder, get.path, "", replies, &datagrams);
            MaskClock(answer.chunks);
            EXPECT_EQ(answer.head, kHead);
            EXPECT_EQ(answer.chunks, chunks) << get.path;
            EXPECT_EQ(datagrams, queries) << get.path;
        };
        check(get.chunks, 1);
        replies.back() = "no XML";
        if (get.failed != nullptr)
            check(get.failed[0] != '\0' ? get.failed : WithoutValues(get.chunks), 0);
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

} // namespace
