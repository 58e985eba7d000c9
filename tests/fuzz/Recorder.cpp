// SPDX-License-Identifier: GPL-2.0-only
#include "tests/fuzz/Recorder.h"

#include "CBB/WebCtrl/Link/ControlMessage.h"
#include "CBB/WebCtrl/Link/UdpCtrlSocket.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <mongoose.h>
#include <tinyxml.h>
#include <vector>

std::function<std::string(const std::string&)> g_recorder;

namespace {

std::string g_reply;

constexpr const char* kQueries[] = {
    QueryText::Display, QueryText::BaseInfo, QueryText::VideoMirror, QueryText::NetWorkMode,
    QueryText::Cms,     QueryText::Wifi,     QueryText::WifiAp,      QueryText::MobileGNet,
    QueryText::GB28181, QueryText::Version,  QueryText::SystemInfo,
};

#define NETWORK " strFD_SSID strFD_Passwd ucFD_AuthMode ucFD_CryptType ucFD_DhcpEnableFlag"
constexpr const char* kWrites[] = {
    "(stDisplay strLanguage)",
    "(stBaseInfo strFD_DeviceNo ucFD_TimeZone ucFD_GpsSTFlag strFD_CurTime)",
    "(stVideoMirror(stVideoMirrorPara(VChn_0 ucFD_LeftRight ucFD_UpDown)))",
    "(stNetWorkMode ucFD_NetType usFD_GPSInterval)",
    "(stCMS ucFD_AddressType uiFD_IP usFD_Port)",
    "(stCMS ucFD_AddressType strFD_Domain usFD_Port)",
    "(stWifi ucFD_WorkMode)",
    "(stWifi ucFD_WorkMode" NETWORK ")",
    "(stWifiAp" NETWORK ")",
    "(stMobileGNet ucFD_NetType strFD_Apn strFD_PhoneNo strFD_UserName strFD_UserPasswd)",
    "(stGB28181 ucFD_Enable strFD_Manufacturer strFD_ModelName strFD_ServerIp usFD_ServerPort "
    "strFD_ServerID strFD_DeviceId usFD_DevicePort strFD_DeviceUser strFD_DevicePass"
    "(stGB28181SubID(SUBDEVID_0 strFD_LensId)))",
};

// A node's names in document order: "(element attribute attribute(child)(child))". The document
// and what is no element have no name.
std::string Shape(const TiXmlNode& node) {
    const TiXmlElement* element = node.ToElement();
    std::string shape = element != nullptr ? "(" + element->ValueStr() : "(";
    const TiXmlAttribute* attribute = element != nullptr ? element->FirstAttribute() : nullptr;
    for (; attribute != nullptr; attribute = attribute->Next())
        shape.append(" ").append(attribute->Name());
    for (const TiXmlNode* child = node.FirstChild(); child; child = child->NextSibling())
        shape += Shape(*child);
    return shape + ")";
}

bool IsKnown(const std::string& datagram) {
    for (const char* query : kQueries) {
        if (datagram == query)
            return true;
    }
    TiXmlDocument document;
    document.Parse(datagram.c_str());
    if (document.Error() || datagram.find("<VariCfgSec Action=\"DEVICE_SET\">") != 0)
        return false;
    const std::string shape = Shape(document);
    return std::any_of(std::begin(kWrites), std::end(kWrites), [&](const std::string& write) {
        return shape == "((VariCfgSec Action" + write + "))";
    });
}

} // namespace

CUdpCtrlSocket::CUdpCtrlSocket(const char* dstIp, uint16_t, uint8_t, const char* ifName) {
    Require(strlen(dstIp) < sizeof(m_szDstIp) && strlen(ifName) < sizeof(m_szIfName));
    g_reply.clear();
}

CUdpCtrlSocket::~CUdpCtrlSocket() = default;

int CUdpCtrlSocket::SendDataToHost(const char* data, int len) {
    Require(strlen(data) == static_cast<size_t>(len) && IsKnown(data));
    g_reply = g_recorder(data).substr(0, kReplyCapacity - 1);
    return 0;
}

int CUdpCtrlSocket::RecvDataFromHost(char* out, int* outLen) {
    if (g_reply.empty())
        return -2;
    strcpy(out, g_reply.c_str());
    *outLen = static_cast<int>(g_reply.size());
    g_reply.clear();
    return 0;
}

std::string Ask(CWebCtrl& controller, const std::string& path, std::string_view body) {
    std::string text = "POST " + path + " HTTP/1.1\r\nContent-Length: ";
    text.append(std::to_string(body.size())).append("\r\n\r\n").append(body);
    // A block of exactly its size, so that a sanitizer sees the first byte read beyond.
    std::vector<char> request(text.begin(), text.end());
    mg_http_message message;
    Require(mg_http_parse(request.data(), request.size(), &message) > 0);
    mg_connection connection{};
    controller.DoHttpRequest(&connection, &message);
    std::string answer(reinterpret_cast<char*>(connection.send.buf), connection.send.len);
    mg_iobuf_free(&connection.send);
    return answer;
}
