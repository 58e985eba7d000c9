// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Link/ControlLink.h"

#include <cstring>

#include "CBB/Util/TextFun.h"
#include "CBB/WebCtrl/Link/UdpCtrlSocket.h"
#include "CBB/WebCtrl/PrintLine.h"
#include "CBB/WebCtrl/WebCtrl.h"

std::unique_ptr<ControlLink> CWebCtrl::OpenLink() {
    return std::make_unique<CUdpCtrlSocket>(m_szDstIp, m_usDstPort, 1, "eth0");
}

int CWebCtrl::GetParaInfoByCmd(const char* request, char* reply, int* replyLen) {
    PrintLine("FUN:", __func__, ", LINE:", 730, ", dst.ip:", m_szDstIp, ", dst:port:", m_usDstPort,
              ".\n");
    const std::unique_ptr<ControlLink> link = OpenLink();
    if (link->SendDataToHost(request, static_cast<int>(strlen(request))) != 0 ||
        link->RecvDataFromHost(reply, replyLen) != 0)
        return -1;
    PrintLine("FUN:", __func__, ", LINE:", 746, ".\n");
    return 0;
}

int CWebCtrl::SetParaByCmd(ControlLink& link, const char* request, int len, int* result) {
    const int error = link.SendDataToHost(request, len);
    return error != 0 ? error : GetParaResult(link, result);
}

int CWebCtrl::GetParaResult(ControlLink& link, int* result) {
    char reply[kReplyCapacity];
    char value[kAttrValueCapacity] = {};
    int replyLen = 0;
    if (link.RecvDataFromHost(reply, &replyLen) != 0 ||
        GetParaAttrValue(reply, "Result", value) != 0)
        return -1;
    *result = ToInt(value);
    return 0;
}
