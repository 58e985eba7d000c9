// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// The recorder's main application as a script: the test receives each datagram and answers it.

#include <string>
#include <vector>

#include "tests/system/HttpClient.h"

class Recorder {
public:
    // Binds 127.0.0.1 at `port`.
    explicit Recorder(int port = 6000);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // The next datagram; fails the test when none comes within 5 s.
    std::string Receive();
    // Whether a datagram waits, or comes within that time.
    bool HasMore(int timeoutMs = 0);
    // Sends to where the last datagram came from, or to the daemon's port.
    void Reply(const std::string& text);

private:
    int m_sock = -1;
    std::string m_peer;
};

// One request with the exchanges that it leads to: `replies` are sent in turn, each after a
// datagram has come; the datagrams go to `*datagrams`.
Answer Exchange(Recorder& recorder, const std::string& path, const std::string& body,
                const std::vector<std::string>& replies,
                std::vector<std::string>* datagrams = nullptr);

// `<VariCfgSec Action="DEVICE_QUERY" Result="0">SECTION</VariCfgSec>`
std::string QueryReply(const std::string& section);
// `<VariCfgSec Action="DEVICE_SET" Result="RESULT"/>`
std::string SetReply(int result);
