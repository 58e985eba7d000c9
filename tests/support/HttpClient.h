// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// An HTTP/1.1 client that shows what came byte for byte.

#include <cstdio>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <vector>

struct Answer {
    std::string head;                // status line and headers, with the empty line
    std::vector<std::string> chunks; // of a chunked body, without the empty one that ends it
    std::string body;                // of either kind of body
};

class HttpClient {
public:
    // Connects to 127.0.0.1; fails the test when nobody listens.
    explicit HttpClient(int port = 80);

    // False when the server has closed and takes nothing; the rest is lost.
    bool Send(const std::string& bytes);
    // Closes this side: nothing more is sent.
    void EndInput() { shutdown(m_sock, SHUT_WR); }
    // Reads one answer; fails the test when nothing more comes before it is complete. The answer to
    // a HEAD has no body.
    Answer Read(bool hasBody = true);
    // Whether the server closes the connection within that time and sends nothing more.
    bool ClosedWithin(int timeoutSeconds);

private:
    int m_sock;
    std::unique_ptr<FILE, int (*)(FILE*)> m_received;
};

// The bytes of a request: GET without a body, POST with one.
std::string Request(const std::string& path, const std::string& body = "");
