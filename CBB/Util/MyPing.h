// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <netinet/in.h>
#include <sys/time.h>

// One ICMP echo request to an IPv4 host (RFC 792), one short look for the reply, and a report on
// standard output. Needs the right to open a raw socket, and gives up a set-user-id's rights then.
class CMyPing {
public:
    CMyPing() = default;
    virtual ~CMyPing();
    CMyPing(const CMyPing&) = delete;
    CMyPing& operator=(const CMyPing&) = delete;

    // `host`: a name or a dotted address. Failures are told on standard error; the statistics come
    // only when a request was tried. Leaves the socket open when the name could not be resolved.
    void Ping(const char* host);

    // Closes the socket: close(2)'s result, or -1 when it was closed already.
    int Close();

    // Whether the `length` bytes of an IP datagram are the asked address's reply to this object's
    // last request, which is then reported and counted. Any bytes will do; a length below 0 stands
    // for none.
    bool ParseReply(const unsigned char* datagram, int length);

    // The Internet checksum (RFC 1071) of words in host order; an odd last byte is a low byte.
    static uint16_t Checksum(const void* buffer, int length);

private:
    bool OpenSocket();
    bool Resolve(const char* host);
    void SendRequest();
    void ReceiveReply();
    void PrintStatistics() const;

    unsigned char m_szSendBuf[4096] = {};
    unsigned char m_szRecvBuf[4096] = {};
    int m_iSock = -1;
    int m_iDataLen = 56; // ICMP payload bytes
    int m_iSendCount = 0;
    int m_iRecvCount = 0;
    sockaddr_in m_stDstAddr = {};
    int m_iPid = 0;
    timeval m_stRecvTime = {};
};

// Probes `host` once; the report on standard output tells whether it answered. Returns what Close
// does: negative, except after a name that could not be resolved.
int PingHost(const char* host);
