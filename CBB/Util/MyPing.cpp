// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/MyPing.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <netdb.h>
#include <netinet/ip_icmp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "CBB/Util/NetText.h"

namespace {

constexpr int kReceiveBuffer = 51200;
// A host that does not answer at once counts as lost.
constexpr timespec kReplyWait = {0, 500'000};
// In an IPv4 header (RFC 791).
constexpr int kTtlOffset = 8;
constexpr int kSourceOffset = 12;

// The start of the packet as it travels; padding follows.
struct EchoPacket {
    uint8_t type;
    uint8_t code;
    uint16_t checksum;
    uint16_t identifier;
    uint16_t sequence;
    uint32_t seconds; // of sending, host order
    uint32_t microseconds;
};
static_assert(sizeof(EchoPacket) == ICMP_MINLEN + 8);

} // namespace

CMyPing::~CMyPing() {
    Close();
}

int CMyPing::Close() {
    const int result = m_iSock >= 0 ? close(m_iSock) : -1;
    m_iSock = -1;
    return result;
}

uint16_t CMyPing::Checksum(const void* buffer, int length) {
    const auto* bytes = static_cast<const unsigned char*>(buffer);
    uint32_t sum = 0;
    for (; length > 1; length -= 2, bytes += 2) {
        uint16_t word;
        memcpy(&word, bytes, sizeof(word));
        sum += word;
    }
    if (length == 1)
        sum += *bytes;
    sum = (sum >> 16) + (sum & 0xffff);
    sum += sum >> 16;
    return static_cast<uint16_t>(~sum);
}

bool CMyPing::OpenSocket() {
    const protoent* protocol = getprotobyname("icmp");
    if (protocol == nullptr) {
        perror("getprotobyname");
        return false;
    }
    Close();
    m_iSock = socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, protocol->p_proto);
    if (m_iSock < 0) {
        perror("socket error");
        return false;
    }
    if (setuid(getuid()) != 0)
        perror("setuid error");
    setsockopt(m_iSock, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof(kReceiveBuffer));
    return true;
}

bool CMyPing::Resolve(const char* host) {
    m_stDstAddr = {};
    m_stDstAddr.sin_family = AF_INET;
    m_stDstAddr.sin_addr.s_addr = inet_addr(host);
    if (m_stDstAddr.sin_addr.s_addr != INADDR_NONE)
        return true;
    const hostent* entry = gethostbyname(host);
    if (entry == nullptr) {
        perror("gethostbyname error");
        return false;
    }
    memcpy(&m_stDstAddr.sin_addr, entry->h_addr_list[0], sizeof(m_stDstAddr.sin_addr));
    return true;
}

void CMyPing::SendRequest() {
    ++m_iSendCount;
    timeval now;
    gettimeofday(&now, nullptr);
    EchoPacket packet = {};
    packet.type = ICMP_ECHO;
    packet.identifier = htons(static_cast<uint16_t>(m_iPid));
    packet.sequence = htons(static_cast<uint16_t>(m_iSendCount));
    packet.seconds = static_cast<uint32_t>(now.tv_sec);
    packet.microseconds = static_cast<uint32_t>(now.tv_usec);
    const int length = ICMP_MINLEN + m_iDataLen;
    memcpy(m_szSendBuf, &packet, sizeof(packet));
    packet.checksum = Checksum(m_szSendBuf, length);
    memcpy(m_szSendBuf, &packet, sizeof(packet));
    if (sendto(m_iSock, m_szSendBuf, static_cast<size_t>(length), 0,
               reinterpret_cast<const sockaddr*>(&m_stDstAddr), sizeof(m_stDstAddr)) < 0)
        perror("sendto error");
    else
        puts("send_packet ok");
}

void CMyPing::ReceiveReply() {
    pollfd waiting = {m_iSock, POLLIN, 0};
    if (ppoll(&waiting, 1, &kReplyWait, nullptr) <= 0)
        return;
    const ssize_t length = recv(m_iSock, m_szRecvBuf, sizeof(m_szRecvBuf), 0);
    if (length < 0) {
        if (errno == EINTR)
            return;
        perror("recvfrom error");
    } else {
        puts("recv_packet ok.");
    }
    gettimeofday(&m_stRecvTime, nullptr);
    ParseReply(m_szRecvBuf, static_cast<int>(length));
}

bool CMyPing::ParseReply(const unsigned char* datagram, int length) {
    const int headerLength = length > 0 ? (datagram[0] & 15) * 4 : 0;
    const int icmpLength = length - headerLength;
    if (icmpLength < ICMP_MINLEN) {
        printf("ICMP packets's length is less than 8");
        return false;
    }
    if (icmpLength < static_cast<int>(sizeof(EchoPacket)))
        return false; // no reply to a request of ours: it lacks the time of sending
    EchoPacket packet;
    memcpy(&packet, datagram + headerLength, sizeof(packet));
    // The whole process id is compared, so above 65535 no reply is accepted, on purpose.
    if (packet.type != ICMP_ECHOREPLY || ntohs(packet.identifier) != m_iPid)
        return false;
    // A raw socket is given every host's replies, also late ones to a ping before this.
    constexpr size_t kRepeated = offsetof(EchoPacket, identifier);
    if (memcmp(datagram + kSourceOffset, &m_stDstAddr.sin_addr, sizeof(in_addr)) != 0 ||
        memcmp(datagram + headerLength + kRepeated, m_szSendBuf + kRepeated,
               sizeof(packet) - kRepeated) != 0)
        return false;

    int64_t seconds =
        static_cast<int32_t>(static_cast<uint32_t>(m_stRecvTime.tv_sec) - packet.seconds);
    int64_t microseconds = static_cast<int64_t>(m_stRecvTime.tv_usec) - packet.microseconds;
    if (microseconds < 0) {
        --seconds;
        microseconds += 1000000;
    }
    const double rttMs =
        static_cast<double>(seconds) * 1000 + static_cast<double>(microseconds) / 1000.0;
    printf("%d byte from %s: icmp_seq=%u ttl=%d rtt=%.3f ms\n", icmpLength,
           DottedText(m_stDstAddr.sin_addr.s_addr).c_str(),
           static_cast<unsigned>(ntohs(packet.sequence)), datagram[kTtlOffset], rttMs);
    ++m_iRecvCount;
    return true;
}

void CMyPing::PrintStatistics() const {
    // Divided first, in integers: all or nothing.
    const int lost = m_iSendCount > 0 ? 100 * ((m_iSendCount - m_iRecvCount) / m_iSendCount) : 0;
    puts("\n--------------------PING statistics-------------------");
    printf("%d packets transmitted, %d received , %%%d lost\n", m_iSendCount, m_iRecvCount, lost);
}

void CMyPing::Ping(const char* host) {
    if (!OpenSocket() || !Resolve(host))
        return;
    m_iPid = getpid();
    printf("PING %s(%s): %d bytes data in ICMP packets.\n", host,
           DottedText(m_stDstAddr.sin_addr.s_addr).c_str(), m_iDataLen);
    SendRequest();
    ReceiveReply();
    PrintStatistics();
    Close();
}

int PingHost(const char* host) {
    CMyPing ping;
    ping.Ping(host);
    return ping.Close();
}
