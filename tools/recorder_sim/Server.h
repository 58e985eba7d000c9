// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <deque>
#include <netinet/in.h>
#include <string>
#include <time.h>
#include <unistd.h>

#include "Options.h"
#include "Recorder.h"

// Owns a file descriptor.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    ~Descriptor() {
        if (m_fd != -1)
            close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor(Descriptor&& other) noexcept : m_fd(other.m_fd) { other.m_fd = -1; }
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    int Get() const { return m_fd; }
    bool IsOpen() const { return m_fd != -1; }

private:
    int m_fd;
};

// Serves the recorders over UDP: one thread, one socket for each, answers in the order of requests.
class Server {
public:
    // Uses only the options that hold for all recorders.
    explicit Server(const Options& options) : m_options(options) {}

    // Takes over SIGINT and SIGTERM. On failure returns false with a sentence in `error`.
    bool Open(std::string& error);

    // Listens for a recorder, which must outlive the server. Fails as Open does.
    bool Add(Recorder& recorder, const std::string& ip, uint16_t port, std::string& error);

    // The endpoint of the recorder added last, as "IP:PORT".
    std::string Endpoint() const;

    // Answers until SIGINT or SIGTERM.
    void Run();

private:
    struct Station {
        Recorder* recorder;
        Descriptor socket;
    };
    struct Pending {
        long long dueMs;
        const Station* station;
        sockaddr_in peer;
        std::string text;
    };

    void Receive(const Station& station);
    void SendDue();
    int MsToNextDue() const;

    const Options& m_options;
    Descriptor m_otherPort; // answers leave from it with --wrong-port
    Descriptor m_signals;
    std::deque<Station> m_stations; // answers point into it
    std::deque<Pending> m_pending;
};
