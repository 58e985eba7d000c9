// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/SectionExchange.h"

#include "CBB/WebCtrl/PrintLine.h"
#include "CBB/WebCtrl/Link/UdpCtrlSocket.h"

HandlerTrace::HandlerTrace(const char* function, int line) : m_function(function), m_line(line) {
    PrintLine("FUN:", m_function, ", LINE:", m_line, ".\n");
}

HandlerTrace::~HandlerTrace() {
    PrintLine("FUN:", m_function, ", LINE:", m_line, ".\n");
}

int QueryRecord(CWebCtrl& controller, const char* query, const SectionImporter& importer,
                CConfig_Task& task) {
    char reply[kReplyCapacity];
    int replyLen = 0;
    if (controller.GetParaInfoByCmd(query, reply, &replyLen) != 0)
        return -1;
    return ImportSection(controller, reply, [&](const TiXmlElement* section) {
        return importer(task, section, &task.m_stPara);
    });
}

int SendSet(CWebCtrl& controller, CUdpCtrlSocket& sock, const std::string& message, int* result) {
    const int error =
        controller.SetParaByCmd(sock, message.c_str(), static_cast<int>(message.size()), result);
    if (error == 0 && *result == 0)
        controller.Restart();
    return error;
}

int SendSet(CWebCtrl& controller, const std::string& message) {
    CUdpCtrlSocket sock(controller.DestinationIp(), controller.DestinationPort(), 1, "eth0");
    int result = 0;
    return SendSet(controller, sock, message, &result);
}
