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
        if (m_fd != -1) {
            close(m_fd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    int Get() const { return m_fd; }
    bool IsOpen() const { return m_fd != -1; }

private:
    int m_fd;
};

// The recorder's UDP end: one thread, one socket, answers in the order of the requests.
class Server {
public:
    Server(const Options& options, Recorder& recorder);

    // Binds the socket and takes SIGINT and SIGTERM over. False with one line for people in
    // `error`.
    bool Open(std::string& error);

    // The address listened on, as "IP:PORT"; known once open.
    std::string Endpoint() const;

    // Answers until SIGINT or SIGTERM.
    void Run();

private:
    struct Pending {
        long long dueMs;
        sockaddr_in peer;
        std::string text;
    };

    void Receive();
    void SendDue();
    int MsToNextDue() const;

    const Options& m_options;
    Recorder& m_recorder;
    Descriptor m_socket;
    Descriptor m_otherPort; // answers leave from it with --wrong-port
    Descriptor m_signals;
    std::deque<Pending> m_pending;
};
