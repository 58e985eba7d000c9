// SPDX-License-Identifier: GPL-2.0-only
// Mirroring of the first video channel, section stVideoMirror.
#include <cstring>

#include "CBB/Util/TextFun.h"
#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"

namespace {

int getMirrorInfoFromNet(CWebCtrl& controller, VideoMirrorPara* para) {
    return QueryBlock(controller, "stVideoMirror", &CConfig_Task::Import_stVideoMirror,
                      &DeviceParaRecord::stVideoMirror, para);
}

int setMirrorInfoToNet(CWebCtrl& controller, const VideoMirrorPara& para) {
    SetMessage message;
    message.Open("stVideoMirror").Close(">").Open("stVideoMirrorPara").Close(">");
    message.Open("VChn_0")
        .Number("ucFD_LeftRight", para.ucFD_LeftRight)
        .Number("ucFD_UpDown", para.ucFD_UpDown)
        .Close("/>");
    message.Close("</stVideoMirrorPara>").Close("</stVideoMirror>");
    return SendSet(controller, message.Finish());
}

// The page sends lists such as "1-0", of which the first number counts.
uint8_t ReadFlag(Form& form, const char* name) {
    const char* text = form.Text(name);
    return ToInt(text + strspn(text, "-")) >= 1;
}

} // namespace

// The members are called str... though they hold numbers: tools in the field use these names.

void get_MirrorInfo(CWebCtrl& controller, std::string_view, JsonAnswer& answer) {
    const HandlerTrace trace(__func__, __LINE__);
    VideoMirrorPara para{};
    const int error = getMirrorInfoFromNet(controller, &para);
    answer.Member("strFD_LeftRight", para.ucFD_LeftRight);
    answer.Member("strFD_UpDown", para.ucFD_UpDown);
    answer.Result(error == 0);
}

void set_MirrorInfo(CWebCtrl& controller, std::string_view body, JsonAnswer& answer) {
    Form form(body);
    VideoMirrorPara para{};
    para.ucFD_UpDown = ReadFlag(form, "strFD_UpDown");
    para.ucFD_LeftRight = ReadFlag(form, "strFD_LeftRight");
    answer.WriteResult(setMirrorInfoToNet(controller, para) == 0);
}
