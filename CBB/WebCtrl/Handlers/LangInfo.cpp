// SPDX-License-Identifier: GPL-2.0-only
// Display language, section stDisplay.
#include <cstring>

#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"
#include "CBB/WebCtrl/PrintLine.h"

namespace {

int getLangInfoFromNet(CWebCtrl& controller, DisplayPara* para) {
    return QueryBlock(controller, "stDisplay", &CConfig_Task::Import_stDisplay,
                      &DeviceParaRecord::stDisplay, para);
}

int setLangInfoToNet(CWebCtrl& controller, const char* language) {
    SetMessage message;
    message.Open("stDisplay").Text("strLanguage", language).Close(" />");
    return SendSet(controller, message.Finish());
}

} // namespace

// What is not Chinese has two codes: the page uses EN, the recorder US.

void get_LangInfo(CWebCtrl& controller, std::string_view, JsonAnswer& answer) {
    const HandlerTrace trace(__func__, __LINE__);
    DisplayPara para{};
    const int error = getLangInfoFromNet(controller, &para);
    answer.Member("strLanguage", strcmp(para.strLanguage, "CN") == 0 ? "CN" : "EN");
    answer.Result(error == 0);
}

void set_LangInfo(CWebCtrl& controller, std::string_view body, JsonAnswer& answer) {
    Form form(body);
    const char* language = form.WholeText("strLanguage");
    int error = 0;
    if (language[0] != '\0') {
        PrintLine("CWebCtrl::set_LangInfo, lang:", Foreign{language}, ".\n");
        error = setLangInfoToNet(controller, strcmp(language, "CN") == 0 ? "CN" : "US");
    }
    answer.WriteResult(error == 0);
}
