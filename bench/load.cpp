// SPDX-License-Identifier: GPL-2.0-only
// Keeps N connections to an HTTP server busy, each with one request at a time, until M answers have
// come. Prints "REQUESTS_PER_SECOND BODY_BYTES", the bytes of the last answer's body. Ends with
// status 1 at an answer that is no 200, or after ten seconds without any.
//
//   bench_load IP:PORT PATH N M [IDLE]
//
// IDLE more connections are opened first and never used.
#include <cstdio>
#include <cstring>
#include <ctime>
#include <optional>
#include <strings.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "bench/Endpoint.h"

namespace {

constexpr int kPatienceMs = 10000;

[[noreturn]] void Die(const std::string& what) {
    fprintf(stderr, "bench_load: %s\n", what.c_str());
    exit(1);
}

struct Answer {
    size_t end; // behind its last byte
    size_t body;
};

// The value of the header `name` in a head of `end` bytes; null when it is missing.
const char* Header(const std::string& text, size_t end, const char* name) {
    const size_t length = strlen(name);
    for (size_t at = text.find("\r\n") + 2; at < end; at = text.find("\r\n", at) + 2)
        if (strncasecmp(&text[at], name, length) == 0 && text[at + length] == ':')
            return &text[at + length + 1] + strspn(&text[at + length + 1], " ");
    return nullptr;
}

// RFC 9112, section 7.1, without trailers.
std::optional<Answer> ReadChunks(const std::string& text, size_t at) {
    for (size_t body = 0;;) {
        const size_t line = text.find("\r\n", at);
        if (line == std::string::npos)
            return std::nullopt;
        const size_t length = strtoul(text.c_str() + at, nullptr, 16);
        at = line + 2 + length + 2;
        if (at > text.size())
            return std::nullopt;
        if (length == 0)
            return Answer{at, body};
        body += length;
    }
}

// The first answer in `text`; nothing while it is incomplete.
std::optional<Answer> ReadAnswer(const std::string& text) {
    const size_t headEnd = text.find("\r\n\r\n");
    if (headEnd == std::string::npos)
        return std::nullopt;
    if (text.compare(0, 13, "HTTP/1.1 200 ") != 0)
        Die("answered with " + text.substr(0, text.find("\r\n")));
    const size_t start = headEnd + 4;
    const char* coding = Header(text, headEnd, "Transfer-Encoding");
    if (coding != nullptr && strncmp(coding, "chunked", 7) == 0)
        return ReadChunks(text, start);
    const char* field = Header(text, headEnd, "Content-Length");
    if (field == nullptr)
        Die("an answer without a length");
    const size_t length = strtoul(field, nullptr, 10);
    return text.size() < start + length ? std::nullopt
                                        : std::optional(Answer{start + length, length});
}

class Load {
public:
    Load(const sockaddr_in& server, const std::string& path, long wanted)
        : m_server(server), m_left(wanted), m_unsent(wanted),
          m_request("GET " + path + " HTTP/1.1\r\nHost: bench\r\n\r\n") {}

    int Connect() const {
        const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (fd < 0 || connect(fd, Generic(m_server), sizeof(m_server)) != 0)
            Die("cannot connect");
        return fd;
    }

    void AddConnection() {
        m_connections.push_back({-1, ""});
        Reconnect(m_connections.size() - 1);
    }

    // Returns the length of the last answer's body.
    size_t Run() {
        for (size_t i = 0; i < m_connections.size(); ++i)
            Ask(i);
        while (m_left > 0) {
            epoll_event events[64];
            const int count = epoll_wait(m_epoll, events, 64, kPatienceMs);
            if (count <= 0)
                Die("no answer for ten seconds");
            for (int i = 0; i < count; ++i)
                Read(events[i].data.u64);
        }
        return m_lastBody;
    }

private:
    struct Connection {
        int fd;
        std::string received;
    };

    void Reconnect(size_t index) {
        Connection& connection = m_connections[index];
        if (connection.fd != -1)
            close(connection.fd);
        connection = {Connect(), ""};
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = index;
        epoll_ctl(m_epoll, EPOLL_CTL_ADD, connection.fd, &event);
    }

    void Ask(size_t index) {
        if (m_unsent == 0)
            return;
        --m_unsent;
        if (send(m_connections[index].fd, m_request.data(), m_request.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(m_request.size())) {
            Die("cannot send");
        }
    }

    void Read(size_t index) {
        Connection& connection = m_connections[index];
        char buffer[65536];
        const ssize_t size = recv(connection.fd, buffer, sizeof(buffer), 0);
        if (size <= 0) {
            // Some servers close after a number of requests: ask again on a new connection.
            ++m_unsent;
            Reconnect(index);
            Ask(index);
            return;
        }
        connection.received.append(buffer, static_cast<size_t>(size));
        if (const auto answer = ReadAnswer(connection.received)) {
            connection.received.erase(0, answer->end);
            m_lastBody = answer->body;
            --m_left;
            Ask(index);
        }
    }

    sockaddr_in m_server;
    long m_left;
    long m_unsent;
    std::string m_request;
    int m_epoll = epoll_create1(EPOLL_CLOEXEC);
    std::vector<Connection> m_connections;
    size_t m_lastBody = 0;
};

double Now() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

} // namespace

int main(int argc, char** argv) {
    const long connections = argc > 4 ? atol(argv[3]) : 0;
    const long requests = argc > 4 ? atol(argv[4]) : 0;
    if (argc > 6 || connections < 1 || requests < connections) {
        fprintf(stderr, "usage: bench_load IP:PORT PATH CONNECTIONS REQUESTS [IDLE]\n");
        return 2;
    }
    Load load(Endpoint(argv[1]), argv[2], requests);
    for (long i = argc == 6 ? atol(argv[5]) : 0; i > 0; --i)
        load.Connect();
    for (long i = 0; i < connections; ++i)
        load.AddConnection();
    const double start = Now();
    const size_t body = load.Run();
    printf("%.1f %zu\n", static_cast<double>(requests) / (Now() - start), body);
    return 0;
}
