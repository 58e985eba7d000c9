// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <string_view>

struct mg_http_message;

// The one place that reads how a request is framed (RFC 9112). What a proxy could read in another
// way is refused, so that both sides always agree on where a request ends.

constexpr size_t kMaxHeaders = 100;
constexpr size_t kMaxHeadBytes = 16 * 1024;
// Of head and body together, as sent. The largest form is below 4 KiB.
constexpr size_t kMaxRequestBytes = 64 * 1024;

struct RequestFrame {
    enum class Verdict {
        Wait,   // the rest is still to come
        Go,     // the request is whole
        Refuse, // with `status` and `reason`; where it ends is unknown
    };
    Verdict verdict = Verdict::Wait;
    int status = 0;
    const char* reason = ""; // a sentence for the client, without a line's end
    size_t bytes = 0;        // Go: of the whole request as sent. Wait: as many at least are needed
    bool chunked = false;    // Go: the body is still in its chunks
    bool closes = false;     // Go: the connection ends with the answer
    bool wantsContinue = false; // Wait: the client waits for "100 Continue" before its body
    bool isHead = false;        // the answer has no body
};

// Looks at the bytes received so far, which begin with a request. A bare LF ends a line of the
// head, and empty lines before the head are ignored. On Go fills `message`, which points into
// `received`: uri, query, headers and body (in its chunks if `chunked`). A target in absolute form
// gives its path; its host has to be that of the Host header.
RequestFrame LookAtRequest(std::string_view received, mg_http_message& message);
