// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>

#include "CBB/WebCtrl/Link/ControlLink.h"

// The UDP endpoint of one exchange with the recorder's main application (udp(7)).
//
// Bound to local port 4999 on the interface's address, never connected: a reply is accepted by
// its source port alone, from any address. Made for one exchange on the stack of the web thread;
// two of them must not exchange at the same time.
class CUdpCtrlSocket : public ControlLink {
public:
    // Opens and binds. When that fails the object is closed and its sends fail.
    // @param dstIp   IPv4 text of the destination, cut to 31 characters
    // @param dstPort UDP port of the destination and of accepted replies, host order
    // @param maskBC  non-zero: the destination 255.255.255.255 means eth0's broadcast address
    // @param ifName  interface whose address is bound (any, if unknown), cut to 11 characters
    CUdpCtrlSocket(const char* dstIp, uint16_t dstPort, uint8_t maskBC, const char* ifName);
    ~CUdpCtrlSocket() override;
    CUdpCtrlSocket(const CUdpCtrlSocket&) = delete;
    CUdpCtrlSocket& operator=(const CUdpCtrlSocket&) = delete;

    // 0, also when open already, or -1.
    int OpenCtrlSocket();
    // Returns 0.
    int CloseCtrlSocket();
    // Discards the datagrams that wait, then sends one.
    int SendDataToHost(const char* data, int len) override;
    // An empty datagram and one from a foreign source port are no replies.
    int RecvDataFromHost(char* out, int* outLen) override;
    // Discards the datagrams that wait.
    void ClearRecvQueue();

private:
    int m_iSock = -1;
    char m_szDstIp[32] = {};
    uint16_t m_usDstPort = 0;
    uint8_t m_bMaskBC = 0;
    char m_szIfName[12] = {};
};
