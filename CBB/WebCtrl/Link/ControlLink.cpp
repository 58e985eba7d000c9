// SPDX-License-Identifier: GPL-2.0-only
#include <cstring>

#include "CBB/Config/FieldConvert.h"
#include "CBB/WebCtrl/PrintLine.h"
#include "CBB/WebCtrl/Link/UdpCtrlSocket.h"
#include "CBB/WebCtrl/WebCtrl.h"

int CWebCtrl::GetParaInfoByCmd(const char* request, char* reply, int* replyLen) {
    PrintLine("FUN:", __func__, ", LINE:", 730, ", dst.ip:", m_szDstIp, ", dst:port:", m_usDstPort,
              ".\n");
    CUdpCtrlSocket sock(m_szDstIp, m_usDstPort, 1, "eth0");
    if (sock.SendDataToHost(request, static_cast<int>(strlen(request))) != 0)
        return -1;
    if (sock.RecvDataFromHost(reply, replyLen) != 0)
        return -1;
    PrintLine("FUN:", __func__, ", LINE:", 746, ".\n");
    return 0;
}

int CWebCtrl::SetParaByCmd(CUdpCtrlSocket& sock, const char* request, int len, int* result) {
    const int error = sock.SendDataToHost(request, len);
    return error != 0 ? error : GetParaResult(sock, result);
}

int CWebCtrl::GetParaResult(CUdpCtrlSocket& sock, int* result) {
    char reply[kReplyCapacity];
    int replyLen = 0;
    if (sock.RecvDataFromHost(reply, &replyLen) != 0)
        return -1;
    char value[kAttrValueCapacity] = {};
    if (GetParaAttrValue(reply, "Result", value) != 0)
        return -1;
    *result = ToInt(value);
    return 0;
}
