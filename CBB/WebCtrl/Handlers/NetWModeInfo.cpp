// SPDX-License-Identifier: GPL-2.0-only
// Uplink and reporting interval, section stNetWorkMode.
#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"

namespace {

using Block = NetWorkModePara;
constexpr WebField kFields[] = {
    WEB_FIELD_AS(ucFD_NetWType, ucFD_NetType),
    WEB_FIELD(usFD_GPSInterval),
};

int getNetWModeInfoFromNet(CWebCtrl& controller, NetWorkModePara* para) {
    return QueryBlock(controller, "stNetWorkMode", &CConfig_Task::Import_stNetWorkMode,
                      &DeviceParaRecord::stNetWorkMode, para);
}

int setNetWModeInfoToNet(CWebCtrl& controller, const NetWorkModePara& para) {
    SetMessage message;
    AddAttributes(message.Open("stNetWorkMode"), kFields, &para).Close("/>");
    return SendSet(controller, message.Finish());
}

} // namespace

void get_NetWModeInfo(CWebCtrl& controller, std::string_view, JsonAnswer& answer) {
    const HandlerTrace trace(__func__, __LINE__);
    NetWorkModePara para{};
    const int error = getNetWModeInfoFromNet(controller, &para);
    answer.Members(kFields, &para);
    answer.Result(error == 0);
}

void set_NetWModeInfo(CWebCtrl& controller, std::string_view body, JsonAnswer& answer) {
    NetWorkModePara para{};
    Form(body).Read(kFields, &para);
    answer.WriteResult(setNetWModeInfoToNet(controller, para) == 0);
}
