// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Link/UdpCtrlSocket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "CBB/Util/CopyText.h"
#include "CBB/Util/NetTool.h"
#include "CBB/WebCtrl/PrintLine.h"

namespace {

constexpr uint16_t kLocalPort = 4999;
constexpr int kSendBufferBytes = 307200;
constexpr size_t kReplyBytes = 1024;
constexpr int kReplyWaitMs = 5000;
// A recorder that is alive answers sooner. After this time the printed lines are written out.
constexpr int kPromptReplyMs = 20;
// More datagrams than the kernel queues at its default buffer size, even empty ones. So a full
// queue is emptied, but a peer that sends without end cannot hold up the exchange.
constexpr int kMaxDiscarded = 1024;
// Longer messages are sent without being printed.
constexpr size_t kShownMessageBytes = 256;

sockaddr_in Ipv4Address(in_addr_t address, uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = address;
    result.sin_port = htons(port);
    return result;
}

// poll(2) takes any descriptor number, unlike select(2); on a closed socket it would wait the full
// time.
int WaitReadable(int sock) {
    if (sock == -1)
        return -1;
    pollfd waited{sock, POLLIN, 0};
    int ready = poll(&waited, 1, kPromptReplyMs);
    if (ready == 0) {
        ConsoleFlush();
        ready = poll(&waited, 1, kReplyWaitMs - kPromptReplyMs);
    }
    return ready;
}

} // namespace

CUdpCtrlSocket::CUdpCtrlSocket(const char* dstIp, uint16_t dstPort, uint8_t maskBC,
                               const char* ifName)
    : m_usDstPort(dstPort), m_bMaskBC(maskBC) {
    CopyText(m_szDstIp, dstIp);
    CopyText(m_szIfName, ifName);
    OpenCtrlSocket();
}

CUdpCtrlSocket::~CUdpCtrlSocket() {
    CloseCtrlSocket();
}

int CUdpCtrlSocket::OpenCtrlSocket() {
    if (m_iSock != -1) {
        PrintLine("CUdpCtrlSocket::OpenCtrlSocket already created socket:", m_iSock, ".\n");
        return 0;
    }
    m_iSock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (m_iSock == -1) {
        PrintLine("CUdpCtrlSocket::OpenCtrlSocket, Create Ctrl Socket Failed.Error:",
                  strerror(errno), "\n");
        return -1;
    }
    const int reuse = 2;
    setsockopt(m_iSock, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof(reuse));
    setsockopt(m_iSock, SOL_SOCKET, SO_SNDBUF, &kSendBufferBytes, sizeof(kSendBufferBytes));

    uint32_t address = INADDR_ANY;
    GetIfAddr(m_iSock, m_szIfName, &address);
    const sockaddr_in local = Ipv4Address(address, kLocalPort);
    if (bind(m_iSock, reinterpret_cast<const sockaddr*>(&local), sizeof(local)) != 0) {
        PrintLine("CUdpCtrlSocketSvr::OpenSvrSocket, Server Bind Failed. Error:", strerror(errno),
                  "\n");
        CloseCtrlSocket();
        return -1;
    }
    const int broadcast = 1;
    if (setsockopt(m_iSock, SOL_SOCKET, SO_BROADCAST, &broadcast, sizeof(broadcast)) != 0) {
        PrintLine("CUdpCtrlSocket::OpenCtrlSocket, setsockopt broadcast Failed, Error:",
                  strerror(errno), "\n");
        return -1;
    }
    // The socket blocks: socket(2) sets O_NONBLOCK only on request.
    return 0;
}

int CUdpCtrlSocket::CloseCtrlSocket() {
    if (m_iSock != -1) {
        close(m_iSock);
        m_iSock = -1;
    }
    return 0;
}

int CUdpCtrlSocket::SendDataToHost(const char* data, int len) {
    ClearRecvQueue();

    uint32_t address = 0;
    if (m_bMaskBC != 0 && strcmp(m_szDstIp, "255.255.255.255") == 0) {
        if (GetIfBrdAddr("eth0", &address) != 0) {
            PrintLine("CUdpCtrlSocket::SendDataToHost, get IfBrdAddr failed.\n");
            return -1;
        }
        PrintLine("CUdpCtrlSocket::SendDataToHost, get IfBrdAddr ok, brdaddr:0x", Hex{address},
                  ".\n");
    } else if (inet_pton(AF_INET, m_szDstIp, &address) != 1) {
        address = inet_addr(m_szDstIp); // reads older forms too, five times slower
    }
    const sockaddr_in destination = Ipv4Address(address, m_usDstPort);
    const ssize_t sent =
        sendto(m_iSock, data, static_cast<size_t>(len), 0,
               reinterpret_cast<const sockaddr*>(&destination), sizeof(destination));
    if (sent < 0) {
        const char* const error = strerror(errno);
        PrintLine("CUdpCtrlSocket::SendData2Wifi, send data to [0x", Hex{address}, ":", m_usDstPort,
                  "][len:", len, "], msg:", Foreign{data}, ", failed, err:", error, ".\n");
        return -1;
    }
    if (strlen(data) < kShownMessageBytes) {
        PrintLine("CUdpCtrlSocket::SendData2Wifi, m_bMaskBC:", m_bMaskBC, ", dest[0x", Hex{address},
                  "], send data[len:", len, "], msg:", Foreign{data}, ", ok.\n");
    }
    return 0;
}

int CUdpCtrlSocket::RecvDataFromHost(char* out, int* outLen) {
    const int ready = WaitReadable(m_iSock);
    if (ready < 0) {
        PrintLine("CUdpCtrlSocket::RecvDataFromHost , get net ctrl select failed!\n");
        return -1;
    }
    if (ready == 0)
        return -2;

    char buffer[kReplyBytes + 1];
    sockaddr_in source{};
    socklen_t sourceLen = sizeof(source);
    const ssize_t received = recvfrom(m_iSock, buffer, kReplyBytes, MSG_DONTWAIT,
                                      reinterpret_cast<sockaddr*>(&source), &sourceLen);
    if (received < 1)
        return -1;
    buffer[received] = '\0';

    const Ipv4 sourceIp{source.sin_addr.s_addr};
    const int sourcePort = ntohs(source.sin_port);
    if (sourcePort != m_usDstPort) {
        PrintLine("CUdpCtrlSocket::RecvDataFromHost, failed, get data peer net info not match[",
                  m_szDstIp, "  VS ", sourceIp, "], port[", m_usDstPort, " VS ", sourcePort,
                  "].\n");
        return -1;
    }
    strcpy(out, buffer);
    *outLen = static_cast<int>(received);
    PrintLine("CUdpCtrlSocket::RecvDataFromHost,  get data from[", m_szDstIp, "  VS ", sourceIp,
              "], port[", m_usDstPort, " VS ", sourcePort, "], msg[", Foreign{out}, "], len[",
              *outLen, "].\n");
    return 0;
}

void CUdpCtrlSocket::ClearRecvQueue() {
    if (m_iSock == -1)
        return;
    for (int discarded = 0; discarded < kMaxDiscarded; ++discarded) {
        char byte;
        if (recv(m_iSock, &byte, sizeof(byte), MSG_DONTWAIT) < 0)
            return;
    }
}
