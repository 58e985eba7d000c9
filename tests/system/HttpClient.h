// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// An HTTP/1.1 client that shows what came byte for byte.

#include <string>
#include <vector>

struct Answer {
    std::string head;                // status line and headers, with the empty line
    std::vector<std::string> chunks; // of a chunked body, without the empty one that ends it
    std::string body;                // of either kind of body
    double seconds = 0;              // from the request's last byte to the answer's last
};

class HttpClient {
public:
    // Connects to 127.0.0.1; fails the test when nobody listens.
    explicit HttpClient(int port = 80);
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    void Send(const std::string& bytes);
    // One answer; fails the test when none is complete within `timeoutSeconds`.
    Answer Read(int timeoutSeconds = 20);
    // Whether the server closes the connection in that time, nothing more having come.
    bool ClosedWithin(int timeoutSeconds);

private:
    bool Fill(int timeoutMs);

    int m_sock = -1;
    std::string m_received;
};

// The bytes of a request: GET without a body, POST with one.
std::string Request(const std::string& path, const std::string& body = "",
                    const std::string& headers = "");
