// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/PrintLine.h"

#include <unistd.h>

#include <cerrno>
#include <charconv>

void ConsoleLine::Add(int value) {
    const auto added = std::to_chars(m_text + m_size, m_text + kCapacity, value);
    if (added.ec == std::errc())
        m_size = static_cast<size_t>(added.ptr - m_text);
}

void ConsoleLine::Add(Hex number) {
    const auto added = std::to_chars(m_text + m_size, m_text + kCapacity, number.value, 16);
    if (added.ec == std::errc())
        m_size = static_cast<size_t>(added.ptr - m_text);
}

void ConsoleLine::Add(Ipv4 host) {
    uint8_t bytes[sizeof(host.address)];
    memcpy(bytes, &host.address, sizeof(bytes));
    const char* before = "";
    for (const uint8_t byte : bytes) {
        Add(before);
        Add(int{byte});
        before = ".";
    }
}

void ConsoleLine::Write() const {
    for (size_t done = 0; done < m_size;) {
        const ssize_t written = write(STDOUT_FILENO, m_text + done, m_size - done);
        if (written >= 0)
            done += static_cast<size_t>(written);
        else if (errno != EINTR)
            return; // nobody is left to tell
    }
}
