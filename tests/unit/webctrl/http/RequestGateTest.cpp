// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/RequestGate.h"

#include <gtest/gtest.h>
#include <mongoose.h>
#include <string>

#include "CBB/WebCtrl/Http/ChunkedBody.h"

namespace {

// What the gate says of a text: "wait", "STATUS", or "METHOD PATH?QUERY [BODY]" with what else is
// known of the request.
std::string Say(const std::string& received) {
    std::string text(received, 0); // chunks are joined in it
    mg_http_message message;
    const RequestFrame frame = LookAtRequest(text, message);
    if (frame.verdict == RequestFrame::Verdict::Wait)
        return frame.wantsContinue ? "wait, continue" : "wait";
    if (frame.verdict == RequestFrame::Verdict::Refuse)
        return std::to_string(frame.status);
    const auto view = [](const mg_str& part) { return std::string(part.buf, part.len); };
    if (frame.chunked)
        message.body.len = JoinChunks(message.body.buf, message.body.len);
    return view(message.method) + " " + view(message.uri) + "?" + view(message.query) + " [" +
           view(message.body) + "]" + (frame.closes ? " closes" : "") +
           (frame.bytes < text.size() ? " more" : "") + (frame.isHead ? " head" : "");
}

std::string Headers(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "X-" + std::to_string(i) + ": y\r\n";
    return text;
}

TEST(RequestGate, ReadsARequestInOneWayOrRefusesIt) {
    const std::string get = "GET / HTTP/1.1\r\n";
    const std::string post = "POST /a HTTP/1.1\r\n";
    const std::string chunked = post + "Transfer-Encoding: chunked\r\n\r\n";
    const struct {
        std::string text;
        const char* said;
    } cases[] = {
        {"", "wait"},
        {"GET / HTTP/1.1\r\nA: b\r\n", "wait"},
        {get + "\r\n", "GET /? []"},
        {"\r\n\nGET /a?b=c HTTP/1.1\nHost: h\n\nX", "GET /a?b=c [] more"},
        {"HEAD / HTTP/1.0\r\n\r\n", "HEAD /? [] closes head"},
        {get + "Connection: keep-alive ,\tClose\r\n\r\n", "GET /? [] closes"},
        {get + "Connection: closed\r\nA:\tb\tc \r\n\r\n", "GET /? []"},
        {"OPTIONS * HTTP/1.1\r\n\r\n", "OPTIONS *? []"},
        // The request line.
        {"GET /\r\n\r\n", "400"},
        {"GET  / HTTP/1.1\r\n\r\n", "400"},
        {"GET / HTTP/1.1 HTTP/1.0\r\n\r\n", "400"},
        {"G(T / HTTP/1.1\r\n\r\n", "400"},
        {"GET a HTTP/1.1\r\n\r\n", "400"},
        {"GET / http/1.1\r\n\r\n", "400"},
        {"GET / HTTP/1.11\r\n\r\n", "400"},
        {"GET /a%00b HTTP/1.1\r\n\r\n", "400"},
        {"GET /?%00 HTTP/1.1\r\n\r\n", "GET /?%00 []"},
        {"GET /\x7F HTTP/1.1\r\n\r\n", "400"},
        {"GET / HTTP/1.2\r\n\r\n", "505"},
        {"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", "505"},
        {"\x16\x03\x01", "400"}, // a TLS client
        {"GET http://h/a?b HTTP/1.1\r\nHost: H\r\n\r\n", "GET /a?b []"},
        {"GET http://h HTTP/1.1\r\n\r\n", "GET /? []"},
        {"GET http://h/ HTTP/1.1\r\nHost: i\r\n\r\n", "400"},
        // Headers.
        {get + Headers(100) + "\r\n", "GET /? []"},
        {get + Headers(101) + "\r\n", "431"},
        {get + "A: " + std::string(kMaxHeadBytes - 23, 'x') + "\r\n\r\n", "GET /? []"},
        {get + "A: " + std::string(kMaxHeadBytes - 22, 'x') + "\r\n\r\n", "431"},
        {get + "A: " + std::string(kMaxHeadBytes, 'x'), "431"},
        {get + "A\r\n\r\n", "400"},
        {get + ": b\r\n\r\n", "400"},
        {get + "A : b\r\n\r\n", "400"},
        {get + "A: b\r\n c\r\n\r\n", "400"},
        {get + "A: b\rC: d\r\n\r\n", "400"},
        {get + std::string("A: \0\r\n\r\n", 8), "400"},
        {get + "Host: a\r\nHost: a\r\n\r\n", "400"},
        // Lengths.
        {post + "Content-Length: 2\r\n\r\na", "wait"},
        {post + "Content-Length: 2\r\n\r\nabc", "POST /a? [ab] more"},
        {post + "content-length: 01\r\nContent-Length: 1\r\n\r\na", "POST /a? [a]"},
        {post + "Expect: 100-Continue\r\nContent-Length: 2\r\n\r\n", "wait, continue"},
        {post + "Content-Length: 1\r\nContent-Length: 2\r\n\r\n", "400"},
        {post + "Content-Length: 1, 1\r\n\r\n", "400"},
        {post + "Content-Length: +1\r\n\r\n", "400"},
        {post + "Content-Length:\r\n\r\n", "400"},
        {post + "Content-Length: 18446744073709551616\r\n\r\n", "400"},
        {post + "Content-Length: 18446744073709551615\r\n\r\n", "413"},
        {post + "Content-Length: 65536\r\n\r\n", "413"},
        {post + "Content-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n", "400"},
        // Chunks.
        {post + "Transfer-Encoding: gzip, chunked\r\n\r\n", "501"},
        {post + "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n\r\n", "400"},
        {"POST /a HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", "400"},
        {chunked + "1\r\na\r\n0A;b=\"c\"\r\n0123456789\r\n0\r\nT: u\r\n\r\nX",
         "POST /a? [a0123456789] more"},
        {chunked + "1\r\na\r\n0\r\n", "wait"},
        {chunked + "1\r", "wait"},
        {chunked + "1\n", "400"},
        {chunked + "1\r\nab", "400"},
        {chunked + "1\r\na\rb", "400"},
        {chunked + "x\r\n", "400"},
        {chunked + "1 b\r\n", "400"},
        {chunked + "000000001\r\na", "400"},
        {chunked + "10000\r\n", "413"},
        {chunked + "0\r\nT\x01\r\n\r\n", "400"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(Say(each.text), each.said) << each.text.substr(0, 200);
}

} // namespace
