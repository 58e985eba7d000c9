// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/HttpClient.h"

#include <cerrno>
#include <cstdlib>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "tests/support/Taken.h"

namespace {

constexpr int kReadSeconds = 30; // an exchange lasts 5 s at most, and some wait for others

// 0 is a moment.
void SetTimeout(int sock, int seconds) {
    const timeval limit{seconds, 1};
    setsockopt(sock, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
}

std::string ReadLine(FILE* from) {
    std::string line;
    for (int byte; (line.empty() || line.back() != '\n') && (byte = getc(from)) != EOF;)
        line += static_cast<char>(byte);
    return line;
}

std::string ReadBytes(FILE* from, size_t count) {
    std::string bytes(count, '\0');
    bytes.resize(fread(bytes.data(), 1, count, from));
    return bytes;
}

} // namespace

HttpClient::HttpClient(int port)
    : m_sock(socket(AF_INET, SOCK_STREAM, 0)), m_received(fdopen(m_sock, "r"), fclose) {
    const sockaddr_in server = Loopback(port);
    const int on = 1; // what is sent in pieces arrives in pieces
    setsockopt(m_sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    EXPECT_EQ(connect(m_sock, reinterpret_cast<const sockaddr*>(&server), sizeof(server)), 0);
}

bool HttpClient::Send(const std::string& bytes) {
    return send(m_sock, bytes.data(), bytes.size(), MSG_NOSIGNAL) != -1;
}

Answer HttpClient::Read(bool hasBody) {
    SetTimeout(m_sock, kReadSeconds);
    FILE* const from = m_received.get();
    clearerr(from);
    Answer answer;
    for (std::string line; line != "\r\n" && !feof(from) && !ferror(from);)
        answer.head += line = ReadLine(from);
    const size_t length = answer.head.find("Content-Length: ");
    if (hasBody && answer.head.find("Transfer-Encoding: chunked\r\n") != std::string::npos) {
        while (const size_t size = strtoul(ReadLine(from).c_str(), nullptr, 16)) {
            answer.chunks.push_back(ReadBytes(from, size));
            answer.body += answer.chunks.back();
            ReadLine(from);
        }
        ReadLine(from);
    } else if (hasBody && length != std::string::npos) {
        answer.body = ReadBytes(from, strtoul(answer.head.c_str() + length + 16, nullptr, 10));
    }
    EXPECT_FALSE(feof(from) || ferror(from))
        << "no whole answer, but: " << answer.head << answer.body;
    return answer;
}

bool HttpClient::ClosedWithin(int timeoutSeconds) {
    SetTimeout(m_sock, timeoutSeconds);
    errno = 0;
    return getc(m_received.get()) == EOF && errno != EAGAIN;
}

std::string Request(const std::string& path, const std::string& body) {
    const std::string rest = " " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    const std::string length = "Content-Length: " + std::to_string(body.size()) + "\r\n";
    return body.empty() ? "GET" + rest + "\r\n" : "POST" + rest + length + "\r\n" + body;
}
