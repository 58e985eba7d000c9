// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/HttpClient.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

HttpClient::HttpClient(int port) : m_sock(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(static_cast<uint16_t>(port));
    server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int on = 1; // what is sent in pieces arrives in pieces
    setsockopt(m_sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    EXPECT_EQ(connect(m_sock, reinterpret_cast<sockaddr*>(&server), sizeof(server)), 0);
}

HttpClient::~HttpClient() {
    close(m_sock);
}

void HttpClient::Send(const std::string& bytes) {
    for (size_t at = 0; at < bytes.size();) {
        const ssize_t sent = send(m_sock, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
        if (sent < 0)
            return;
        at += static_cast<size_t>(sent);
    }
}

bool HttpClient::Fill(int timeoutMs) {
    pollfd waited{m_sock, POLLIN, 0};
    char buffer[65536];
    if (poll(&waited, 1, timeoutMs) != 1)
        return false;
    const ssize_t received = recv(m_sock, buffer, sizeof(buffer), 0);
    if (received <= 0)
        return false;
    m_received.append(buffer, static_cast<size_t>(received));
    return true;
}

Answer HttpClient::Read(int timeoutSeconds, bool hasBody) {
    const auto start = std::chrono::steady_clock::now();
    // Waits for `ending` from `at` on, or for `size` bytes from there.
    const auto need = [&](const char* ending, size_t at, size_t size) {
        size_t found = std::string::npos;
        while (ending ? (found = m_received.find(ending, at)) == std::string::npos
                      : m_received.size() < at + size) {
            if (!Fill(timeoutSeconds * 1000)) {
                ADD_FAILURE() << "no whole answer, but: " << m_received;
                return std::string::npos;
            }
        }
        return found;
    };
    Answer answer;
    const size_t headEnd = need("\r\n\r\n", 0, 0);
    if (headEnd == std::string::npos)
        return answer;
    size_t at = headEnd + 4;
    answer.head = m_received.substr(0, at);
    const size_t length = answer.head.find("Content-Length: ");
    if (!hasBody) {
        // nothing follows
    } else if (answer.head.find("Transfer-Encoding: chunked\r\n") != std::string::npos) {
        for (;;) {
            const size_t line = need("\r\n", at, 0);
            if (line == std::string::npos)
                return answer;
            const size_t size = strtoul(m_received.c_str() + at, nullptr, 16);
            if (need(nullptr, line + 2, size + 2) == std::string::npos &&
                m_received.size() < line + 4 + size)
                return answer;
            at = line + 2 + size + 2;
            if (size == 0)
                break;
            answer.chunks.push_back(m_received.substr(line + 2, size));
            answer.body += answer.chunks.back();
        }
    } else if (length != std::string::npos) {
        const size_t size = strtoul(answer.head.c_str() + length + 16, nullptr, 10);
        need(nullptr, at, size);
        answer.body = m_received.substr(at, size);
        at += size;
    }
    m_received.erase(0, at);
    answer.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return answer;
}

void HttpClient::EndInput() {
    shutdown(m_sock, SHUT_WR);
}

bool HttpClient::ClosedWithin(int timeoutSeconds) {
    pollfd waited{m_sock, POLLIN, 0};
    char byte;
    return m_received.empty() && poll(&waited, 1, timeoutSeconds * 1000) == 1 &&
           recv(m_sock, &byte, 1, 0) <= 0;
}

std::string Request(const std::string& path, const std::string& body, const std::string& headers) {
    if (body.empty())
        return "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + headers + "\r\n";
    return "POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + headers +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}
