// SPDX-License-Identifier: GPL-2.0-only
// Central server, section stCMS.
#include <arpa/inet.h>

#include "CBB/Util/CopyText.h"
#include "CBB/WebCtrl/Handlers/CmsAlias.h"
#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"

namespace {

constexpr uint8_t kIpAddressType = 0;
constexpr size_t kAddressBytes = 64;

using Block = CmsPara;
constexpr WebField kAddressType = WEB_FIELD(ucFD_AddressType);
constexpr WebField kPort = WEB_FIELD(usFD_Port);

int getVCmsInfoFromNet(CWebCtrl& controller, CmsPara* para) {
    const auto importer = [](CConfig_Task& task, const TiXmlElement* section,
                             DeviceParaRecord* record) {
        return task.Import_stCMS(section, record, 0);
    };
    return QueryBlock(controller, "stCMS", importer, &DeviceParaRecord::stCMS, para);
}

int setVCmsInfoToNet(CWebCtrl& controller, const CmsPara& para) {
    SetMessage message;
    message.Open("stCMS").Number(kAddressType.attribute, para.ucFD_AddressType);
    if (para.ucFD_AddressType == kIpAddressType)
        message.Text("uiFD_IP", inet_ntoa({para.uiFD_IP}));
    else
        message.Text("strFD_Domain", para.strFD_Domain);
    message.Number(kPort.attribute, para.usFD_Port).Close("/>");
    return SendSet(controller, message.Finish());
}

} // namespace

void get_VCmsInfo(CWebCtrl& controller, std::string_view, JsonAnswer& answer) {
    const HandlerTrace trace(__func__, __LINE__);
    CmsPara para{};
    const int error = getVCmsInfoFromNet(controller, &para);
    char address[kAddressBytes] = {};
    if (para.ucFD_AddressType == kIpAddressType)
        MapCmsAddress(controller, CMS_SERVER_TO_DISPLAY, inet_ntoa({para.uiFD_IP}), address);
    else
        CopyText(address, para.strFD_Domain);
    answer.Member(kAddressType, &para);
    answer.Member("strFD_Address", address);
    answer.Member(kPort, &para);
    answer.Result(error == 0);
}

void set_VCmsInfo(CWebCtrl& controller, std::string_view body, JsonAnswer& answer) {
    Form form(body);
    CmsPara para{};
    form.Read(kAddressType, &para);
    const char* address = form.Text("strFD_Address");
    if (para.ucFD_AddressType == kIpAddressType) {
        char server[kAddressBytes] = {};
        MapCmsAddress(controller, CMS_DISPLAY_TO_SERVER, address, server);
        para.uiFD_IP = inet_addr(server);
    } else {
        CopyText(para.strFD_Domain, address);
    }
    form.Read(kPort, &para);
    answer.WriteResult(setVCmsInfoToNet(controller, para) == 0);
}
