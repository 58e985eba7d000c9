// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/Recorder.h"

#include <arpa/inet.h>
#include <poll.h>

namespace {

// The control socket is bound to eth0's address.
constexpr char kDaemonIp[] = "192.168.50.2";
constexpr int kDaemonPort = 4999;
constexpr int kWaitMs = 5000;

} // namespace

Recorder::Recorder(int port) : m_sock(SOCK_DGRAM, port), m_peer(Loopback(kDaemonPort)) {
    m_peer.sin_addr.s_addr = inet_addr(kDaemonIp);
}

std::string Recorder::Receive() {
    if (!HasMore(kWaitMs)) {
        ADD_FAILURE() << "no datagram came";
        return "";
    }
    char buffer[4096];
    socklen_t length = sizeof(m_peer);
    const ssize_t received = recvfrom(m_sock.Get(), buffer, sizeof(buffer), 0,
                                      reinterpret_cast<sockaddr*>(&m_peer), &length);
    EXPECT_STREQ(inet_ntoa(m_peer.sin_addr), kDaemonIp);
    EXPECT_EQ(ntohs(m_peer.sin_port), kDaemonPort);
    return std::string(buffer, received > 0 ? static_cast<size_t>(received) : 0);
}

bool Recorder::HasMore(int timeoutMs) {
    pollfd waited{m_sock.Get(), POLLIN, 0};
    return poll(&waited, 1, timeoutMs) == 1;
}

void Recorder::Reply(const std::string& text) {
    EXPECT_EQ(sendto(m_sock.Get(), text.data(), text.size(), 0,
                     reinterpret_cast<const sockaddr*>(&m_peer), sizeof(m_peer)),
              static_cast<ssize_t>(text.size()));
}
