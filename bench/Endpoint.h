// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <arpa/inet.h>
#include <cstdlib>
#include <netinet/in.h>
#include <string>

// "IP:PORT" as an address; a text that is none gives port 0.
inline sockaddr_in Endpoint(const std::string& text) {
    sockaddr_in address{};
    const size_t colon = text.find(':');
    address.sin_family = AF_INET;
    if (colon != std::string::npos &&
        inet_pton(AF_INET, text.substr(0, colon).c_str(), &address.sin_addr) == 1) {
        address.sin_port = htons(static_cast<uint16_t>(atoi(text.c_str() + colon + 1)));
    }
    return address;
}

inline const sockaddr* Generic(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}
