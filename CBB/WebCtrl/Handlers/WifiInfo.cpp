// SPDX-License-Identifier: GPL-2.0-only
// Wi-Fi, sections stWifi (work mode, client) and stWifiAp (the recorder's own access point).
#include <cstdio>
#include <cstring>

#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"
#include "CBB/WebCtrl/Link/UdpCtrlSocket.h"

namespace {

constexpr uint8_t kAccessPointMode = 2;

using Block = WifiPara;
constexpr WebField kWorkMode = WEB_FIELD(ucFD_WorkMode);
// What both sections have: the work mode decides which one stands behind them.
constexpr WebField kNetworkFields[] = {
    WEB_FIELD(strFD_SSID),     WEB_FIELD(strFD_Passwd),        WEB_FIELD(ucFD_AuthMode),
    WEB_FIELD(ucFD_CryptType), WEB_FIELD(ucFD_DhcpEnableFlag),
};

int getWifiInfoFromNet(CWebCtrl& controller, WifiPara* para) {
    const int error = QueryBlock(controller, QueryText::Wifi, &CConfig_Task::Import_stWifi,
                                 &DeviceParaRecord::stWifi, para);
    if (error != 0 || para->ucFD_WorkMode != kAccessPointMode)
        return error;

    printf("-------------------ap xml:%s.\n", QueryText::WifiAp);
    WifiApPara ap{};
    const int apError = QueryBlock(controller, QueryText::WifiAp, &CConfig_Task::Import_stWifiAp,
                                   &DeviceParaRecord::stWifiAp, &ap);
    if (apError != 0)
        return apError;
    memcpy(para->strFD_SSID, ap.strFD_SSID, sizeof(para->strFD_SSID));
    memcpy(para->strFD_Passwd, ap.strFD_Passwd, sizeof(para->strFD_Passwd));
    para->ucFD_AuthMode = ap.ucFD_AuthMode;
    para->ucFD_CryptType = ap.ucFD_CryptType;
    para->ucFD_DhcpEnableFlag = ap.ucFD_DhcpEnableFlag;
    printf("-------------------AP ssid:%s.\n", para->strFD_SSID);
    return 0;
}

int setWifiInfoToNet(CWebCtrl& controller, const WifiPara& para) {
    CUdpCtrlSocket sock(controller.DestinationIp(), controller.DestinationPort(), 1, "eth0");
    int result = 0;
    SetMessage wifi;
    wifi.Open("stWifi").Number(kWorkMode.attribute, para.ucFD_WorkMode);
    if (para.ucFD_WorkMode != kAccessPointMode) {
        AddAttributes(wifi, kNetworkFields, &para).Close("/>");
        return SendSet(controller, sock, wifi.Finish(), &result);
    }
    // An accepted work mode ends the write: the access point keeps the settings that it has. They
    // are sent only when the recorder is in that mode already and refuses to enter it again.
    if (SendSet(controller, sock, wifi.Close("/>").Finish(), &result) == 0 && result == 0)
        return 0;
    SetMessage accessPoint;
    AddAttributes(accessPoint.Open("stWifiAp"), kNetworkFields, &para).Close("/>");
    return SendSet(controller, sock, accessPoint.Finish(), &result);
}

} // namespace

void get_WifiInfo(CWebCtrl& controller, mg_connection* connection, mg_http_message*) {
    const HandlerTrace trace(__func__, __LINE__);
    WifiPara para{};
    const int error = getWifiInfoFromNet(controller, &para);
    JsonAnswer answer(connection);
    answer.Member(kWorkMode, &para);
    answer.Members(kNetworkFields, &para);
    answer.Result(error == 0);
}

void set_WifiInfo(CWebCtrl& controller, mg_connection* connection, mg_http_message* message) {
    Form form(message);
    WifiPara para{};
    form.Read(kWorkMode, &para);
    form.Read(kNetworkFields, &para);
    JsonAnswer::WriteResult(connection, setWifiInfoToNet(controller, para) == 0);
}
