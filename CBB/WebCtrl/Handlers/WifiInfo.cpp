// SPDX-License-Identifier: GPL-2.0-only
// Wi-Fi, sections stWifi (work mode, client) and stWifiAp (the recorder's own access point).
#include <cstring>

#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"
#include "CBB/WebCtrl/Link/ControlLink.h"
#include "CBB/WebCtrl/PrintLine.h"

namespace {

constexpr uint8_t kAccessPointMode = 2;

using Block = WifiPara;
constexpr WebField kWorkMode = WEB_FIELD(ucFD_WorkMode);
// Both sections have these; the work mode decides which section is read and written.
constexpr WebField kNetworkFields[] = {
    WEB_FIELD(strFD_SSID),     WEB_SECRET(strFD_Passwd),       WEB_FIELD(ucFD_AuthMode),
    WEB_FIELD(ucFD_CryptType), WEB_FIELD(ucFD_DhcpEnableFlag),
};

int getWifiInfoFromNet(CWebCtrl& controller, WifiPara* para) {
    const int error = QueryBlock(controller, "stWifi", &CConfig_Task::Import_stWifi,
                                 &DeviceParaRecord::stWifi, para);
    if (error != 0 || para->ucFD_WorkMode != kAccessPointMode)
        return error;

    PrintLine("-------------------ap xml:", QueryText("stWifiAp"), ".\n");
    WifiApPara ap{};
    const int apError = QueryBlock(controller, "stWifiAp", &CConfig_Task::Import_stWifiAp,
                                   &DeviceParaRecord::stWifiAp, &ap);
    if (apError != 0)
        return apError;
    memcpy(para->strFD_SSID, ap.strFD_SSID, sizeof(para->strFD_SSID));
    memcpy(para->strFD_Passwd, ap.strFD_Passwd, sizeof(para->strFD_Passwd));
    para->ucFD_AuthMode = ap.ucFD_AuthMode;
    para->ucFD_CryptType = ap.ucFD_CryptType;
    para->ucFD_DhcpEnableFlag = ap.ucFD_DhcpEnableFlag;
    PrintLine("-------------------AP ssid:", Foreign{para->strFD_SSID}, ".\n");
    return 0;
}

int setWifiInfoToNet(CWebCtrl& controller, const WifiPara& para) {
    const std::unique_ptr<ControlLink> link = controller.OpenLink();
    int result = 0;
    SetMessage wifi;
    wifi.Open("stWifi").Number(kWorkMode.attribute, para.ucFD_WorkMode);
    if (para.ucFD_WorkMode != kAccessPointMode) {
        AddAttributes(wifi, kNetworkFields, &para).Close("/>");
        return SendSet(controller, *link, wifi.Finish(), &result);
    }
    // An accepted work mode ends the write, and the access point keeps its stored settings. The
    // settings are sent only when the recorder refuses the mode or does not answer.
    if (SendSet(controller, *link, wifi.Close("/>").Finish(), &result) == 0 && result == 0)
        return 0;
    SetMessage accessPoint;
    AddAttributes(accessPoint.Open("stWifiAp"), kNetworkFields, &para).Close("/>");
    return SendSet(controller, *link, accessPoint.Finish(), &result);
}

} // namespace

void get_WifiInfo(CWebCtrl& controller, std::string_view, JsonAnswer& answer) {
    const HandlerTrace trace(__func__, __LINE__);
    WifiPara para{};
    const int error = getWifiInfoFromNet(controller, &para);
    answer.Member(kWorkMode, &para);
    answer.Members(kNetworkFields, &para);
    answer.Result(error == 0);
}

void set_WifiInfo(CWebCtrl& controller, std::string_view body, JsonAnswer& answer) {
    Form form(body);
    WifiPara para{};
    form.Read(kWorkMode, &para);
    form.Read(kNetworkFields, &para);
    answer.WriteResult(setWifiInfoToNet(controller, para) == 0);
}
