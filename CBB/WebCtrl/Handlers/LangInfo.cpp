// SPDX-License-Identifier: GPL-2.0-only
// Display language, section stDisplay.
#include <cstdio>
#include <cstring>

#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"

namespace {

int getLangInfoFromNet(CWebCtrl& controller, DisplayPara* para) {
    return QueryBlock(controller, QueryText::Display, &CConfig_Task::Import_stDisplay,
                      &DeviceParaRecord::stDisplay, para);
}

int setLangInfoToNet(CWebCtrl& controller, const char* language) {
    SetMessage message;
    message.Open("stDisplay").Text("strLanguage", language).Close(" />");
    return SendSet(controller, message.Finish());
}

} // namespace

// The two sides use different codes for what is not Chinese: the page is told EN, the recorder US.

void get_LangInfo(CWebCtrl& controller, mg_connection* connection, mg_http_message*) {
    const HandlerTrace trace(__func__, __LINE__);
    DisplayPara para{};
    const int error = getLangInfoFromNet(controller, &para);
    JsonAnswer answer(connection);
    answer.Member("strLanguage", strcmp(para.strLanguage, "CN") == 0 ? "CN" : "EN");
    answer.Result(error == 0);
}

void set_LangInfo(CWebCtrl& controller, mg_connection* connection, mg_http_message* message) {
    Form form(message);
    const char* language = form.WholeText("strLanguage");
    int error = 0;
    if (language[0] != '\0') {
        printf("CWebCtrl::set_LangInfo, lang:%s.\n", language);
        error = setLangInfoToNet(controller, strcmp(language, "CN") == 0 ? "CN" : "US");
    }
    JsonAnswer::WriteResult(connection, error == 0);
}
