// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/SectionExchange.h"

#include <tinyxml.h>

#include "CBB/WebCtrl/Link/ControlLink.h"
#include "CBB/WebCtrl/PrintLine.h"

HandlerTrace::HandlerTrace(const char* function, int line) : m_function(function), m_line(line) {
    PrintLine("FUN:", m_function, ", LINE:", m_line, ".\n");
}

HandlerTrace::~HandlerTrace() {
    PrintLine("FUN:", m_function, ", LINE:", m_line, ".\n");
}

int QueryRecord(CWebCtrl& controller, const char* section, const SectionImporter& importer,
                CConfig_Task& task) {
    char reply[kReplyCapacity];
    int replyLen = 0;
    TiXmlDocument parsed;
    TiXmlElement* element = nullptr;
    if (controller.GetParaInfoByCmd(QueryText(section).c_str(), reply, &replyLen) != 0 ||
        controller.GetParaSection(parsed, reply, &element) != 0)
        return -1;
    return importer(task, element, &task.m_stPara);
}

int SendSet(CWebCtrl& controller, ControlLink& link, const std::string& message, int* result) {
    const int error =
        controller.SetParaByCmd(link, message.c_str(), static_cast<int>(message.size()), result);
    if (error == 0 && *result == 0)
        controller.Restart();
    return error;
}

int SendSet(CWebCtrl& controller, const std::string& message) {
    int result = 0;
    return SendSet(controller, *controller.OpenLink(), message, &result);
}
