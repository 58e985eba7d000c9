// SPDX-License-Identifier: GPL-2.0-only
// Device number, time zone and clock, section stBaseInfo.
#include <cstring>
#include <ctime>

#include "CBB/Util/TextFun.h"
#include "CBB/Util/TimeFun.h"
#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"

namespace {

constexpr size_t kTimeTextBytes = 64;

int getBaseInfoFromNet(CWebCtrl& controller, BaseInfoPara* para) {
    return QueryBlock(controller, "stBaseInfo", &CConfig_Task::Import_stBaseInfo,
                      &DeviceParaRecord::stBaseInfo, para);
}

int setBaseInfoToNet(CWebCtrl& controller, const BaseInfoPara& para, const char* currentTime) {
    SetMessage message;
    message.Open("stBaseInfo")
        .Text("strFD_DeviceNo", para.strFD_DeviceNo)
        .Number("ucFD_TimeZone", para.ucFD_TimeZone)
        .Number("ucFD_GpsSTFlag", para.ucFD_GpsSTFlag)
        .Text("strFD_CurTime", currentTime)
        .Close(" />");
    return SendSet(controller, message.Finish());
}

} // namespace

void get_BaseInfo(CWebCtrl& controller, std::string_view, JsonAnswer& answer) {
    const HandlerTrace trace(__func__, __LINE__);
    // The page is shown this system's clock, not the text that the section carries.
    char currentTime[kTimeTextSize];
    FormatTimeText(time(nullptr), currentTime);

    BaseInfoPara para{};
    const int error = getBaseInfoFromNet(controller, &para);
    answer.Member("strFD_DeviceNo", para.strFD_DeviceNo);
    answer.Chunk(", \"ucFD_TimeZone\": \"", para.ucFD_TimeZone, "\" ");
    answer.Member("ucFD_GpsSTFlag", para.ucFD_GpsSTFlag);
    answer.Member("strFD_CurTime", currentTime);
    answer.Result(error == 0);
}

void set_BaseInfo(CWebCtrl& controller, std::string_view body, JsonAnswer& answer) {
    Form form(body);
    BaseInfoPara para{};
    strcpy(para.strFD_DeviceNo, form.Text("strFD_DeviceNo", sizeof(para.strFD_DeviceNo)));
    para.ucFD_TimeZone = static_cast<uint8_t>(ToInt(form.WholeText("ucFD_TimeZone")));
    para.ucFD_GpsSTFlag = ToInt(form.WholeText("ucFD_GpsSTFlag")) > 0;
    const char* currentTime = form.Text("strFD_CurTime", kTimeTextBytes);
    answer.WriteResult(setBaseInfoToNet(controller, para, currentTime) == 0);
}
