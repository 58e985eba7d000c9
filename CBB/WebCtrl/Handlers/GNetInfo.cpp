// SPDX-License-Identifier: GPL-2.0-only
// Mobile data connection, section stMobileGNet.
#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"

namespace {

using Block = MobileGNetPara;
constexpr WebField kFields[] = {
    WEB_FIELD(ucFD_NetType),   WEB_FIELD(strFD_Apn),         WEB_FIELD(strFD_PhoneNo),
    WEB_FIELD(strFD_UserName), WEB_SECRET(strFD_UserPasswd),
};

int getGNetInfoFromNet(CWebCtrl& controller, MobileGNetPara* para) {
    return QueryBlock(controller, "stMobileGNet", &CConfig_Task::Import_stMobileGNet,
                      &DeviceParaRecord::stMobileGNet, para);
}

int setGNetInfoToNet(CWebCtrl& controller, const MobileGNetPara& para) {
    SetMessage message;
    AddAttributes(message.Open("stMobileGNet"), kFields, &para).Close("/>");
    return SendSet(controller, message.Finish());
}

} // namespace

void get_GNetInfo(CWebCtrl& controller, std::string_view, JsonAnswer& answer) {
    const HandlerTrace trace(__func__, __LINE__);
    MobileGNetPara para{};
    const int error = getGNetInfoFromNet(controller, &para);
    answer.Members(kFields, &para);
    answer.Result(error == 0);
}

void set_GNetInfo(CWebCtrl& controller, std::string_view body, JsonAnswer& answer) {
    MobileGNetPara para{};
    Form(body).Read(kFields, &para);
    answer.WriteResult(setGNetInfoToNet(controller, para) == 0);
}
