// SPDX-License-Identifier: GPL-2.0-only
#include "Server.h"

#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <vector>

namespace {

// So many answers may wait for their delay. Further requests then stay in the socket.
constexpr size_t kMaxPending = 256;

long long NowMs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

std::string Text(const sockaddr_in& address) {
    char ip[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &address.sin_addr, ip, sizeof(ip));
    return std::string(ip) + ':' + std::to_string(ntohs(address.sin_port));
}

sockaddr* Generic(sockaddr_in& address) {
    return reinterpret_cast<sockaddr*>(&address);
}

// Bytes that would disturb a terminal are shown as \xNN.
void PrintDatagram(const char* arrow, const sockaddr_in& peer, const std::string& text) {
    printf("%s %s [%zu] ", arrow, Text(peer).c_str(), text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F)
            printf("\\x%02X", byte);
        else
            putchar(c);
    }
    putchar('\n');
    fflush(stdout);
}

} // namespace

bool Server::Open(std::string& error) {
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    sigprocmask(SIG_BLOCK, &stop, nullptr);
    m_signals = Descriptor(signalfd(-1, &stop, SFD_CLOEXEC));
    m_otherPort = Descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!m_signals.IsOpen() || !m_otherPort.IsOpen())
        error = std::string("cannot open a socket: ") + strerror(errno);
    return error.empty();
}

bool Server::Add(Recorder& recorder, const std::string& ip, uint16_t port, std::string& error) {
    Descriptor own(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!own.IsOpen()) {
        error = std::string("cannot open a socket: ") + strerror(errno);
        return false;
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    inet_pton(AF_INET, ip.c_str(), &address.sin_addr);
    if (bind(own.Get(), Generic(address), sizeof(address)) != 0) {
        const int reason = errno;
        error = "cannot listen on " + Text(address) + ": " + strerror(reason) +
                (reason == EADDRINUSE ? "; end the program that uses it or choose another port"
                                      : "; choose another address") +
                " with --listen IP:PORT";
        return false;
    }
    m_stations.push_back({&recorder, std::move(own)});
    return true;
}

std::string Server::Endpoint() const {
    sockaddr_in address{};
    socklen_t length = sizeof(address);
    getsockname(m_stations.back().socket.Get(), Generic(address), &length);
    return Text(address);
}

void Server::Run() {
    std::vector<pollfd> events{{m_signals.Get(), POLLIN, 0}};
    for (const Station& station : m_stations)
        events.push_back({station.socket.Get(), POLLIN, 0});
    for (;;) {
        const nfds_t watched = m_pending.size() < kMaxPending ? events.size() : 1;
        if (poll(events.data(), watched, MsToNextDue()) < 0 && errno != EINTR)
            return;
        if (events[0].revents != 0)
            return;
        for (nfds_t i = 1; i < watched; ++i)
            if (events[i].revents != 0)
                Receive(m_stations[i - 1]);
        SendDue();
    }
}

void Server::Receive(const Station& station) {
    char buffer[kMaxRequest + 1]; // one byte more shows that a request is too long
    sockaddr_in peer{};
    socklen_t length = sizeof(peer);
    const ssize_t size =
        recvfrom(station.socket.Get(), buffer, sizeof(buffer), 0, Generic(peer), &length);
    if (size < 0)
        return;
    const std::string request(buffer, static_cast<size_t>(size));
    if (m_options.verbose)
        PrintDatagram("<-", peer, request);
    if (auto answer = station.recorder->Answer(request))
        m_pending.push_back({NowMs() + m_options.delayMs, &station, peer, std::move(*answer)});
}

void Server::SendDue() {
    while (!m_pending.empty() && m_pending.front().dueMs <= NowMs()) {
        Pending& answer = m_pending.front();
        const Descriptor& from = m_options.wrongPort ? m_otherPort : answer.station->socket;
        if (m_options.verbose)
            PrintDatagram("->", answer.peer, answer.text);
        if (sendto(from.Get(), answer.text.data(), answer.text.size(), 0, Generic(answer.peer),
                   sizeof(answer.peer)) < 0) {
            fprintf(stderr, "recorder_sim: cannot answer %s: %s\n", Text(answer.peer).c_str(),
                    strerror(errno));
        }
        m_pending.pop_front();
    }
}

int Server::MsToNextDue() const {
    if (m_pending.empty())
        return -1;
    const long long wait = m_pending.front().dueMs - NowMs();
    return wait > 0 ? static_cast<int>(wait) : 0;
}
