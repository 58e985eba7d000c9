// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// The recorder's main application as a script: the test receives each datagram and answers it.

#include <string>

#include "tests/support/Taken.h"

class Recorder {
public:
    // Binds 127.0.0.1 at `port`.
    explicit Recorder(int port = 6000);

    // The next datagram; fails the test when none comes within 5 s.
    std::string Receive();
    // Whether a datagram waits, or comes within `timeoutMs`.
    bool HasMore(int timeoutMs = 0);
    // Sends to the sender of the last datagram; before the first one, to the daemon's port.
    void Reply(const std::string& text);

private:
    Taken m_sock;
    sockaddr_in m_peer;
};

// The datagrams that ask for an element and write one, and what they are replied.
inline std::string QueryMessage(const std::string& element) {
    return "<VariCfgSec Action=\"DEVICE_QUERY\"><" + element + "></VariCfgSec>";
}
inline std::string SetMessage(const std::string& element) {
    return "<VariCfgSec Action=\"DEVICE_SET\">" + element + "</VariCfgSec>";
}
inline std::string QueryReply(const std::string& section) {
    return "<VariCfgSec Action=\"DEVICE_QUERY\" Result=\"0\">" + section + "</VariCfgSec>";
}
inline std::string SetReply(int result) {
    return "<VariCfgSec Action=\"DEVICE_SET\" Result=\"" + std::to_string(result) + "\"/>";
}
