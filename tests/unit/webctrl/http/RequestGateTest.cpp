// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/RequestGate.h"

#include <mongoose.h>

#include "CBB/WebCtrl/Http/ChunkedBody.h"
#include "tests/unit/Unit.h"

// What the gate says of a text: "wait", "STATUS", or "METHOD PATH?QUERY [BODY]" with what else is
// known of the request.
static std::string Say(const std::string& received) {
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

static const std::string kGet = "GET / HTTP/1.1\r\n", kPost = "POST /a HTTP/1.1\r\n";
static const std::string kChunked = kPost + "Transfer-Encoding: chunked\r\n\r\n";

TEST(RequestGate, ReadsARequestInOneWay) {
    const std::pair<std::string, const char*> cases[] = {
        {"\r\n\nGET /a?b=c HTTP/1.1\nHost: h\n\nX", "GET /a?b=c [] more"},
        {"HEAD / HTTP/1.0\r\n\r\n", "HEAD /? [] closes head"},
        {kGet + "Connection: keep-alive ,\tx,Close\r\n\r\n", "GET /? [] closes"},
        {kGet + "Connection: closed\r\n!#$%&'*+-.^_`|~9z:\tb\tc \r\n\r\n", "GET /? []"},
        {"OPTIONS * HTTP/1.1\r\n\r\n", "OPTIONS *? []"},
        {"GET /?%00 HTTP/1.1\r\n\r\n", "GET /?%00 []"},
        {"GET http://h/a?b HTTP/1.1\r\nHost: H\r\n\r\n", "GET /a?b []"},
        {"GET https://h HTTP/1.1\r\n\r\n", "GET /? []"},
        {kGet + Repeat(100, "X: y\r\n") + "\r\n", "GET /? []"},
        {kGet + "A: " + std::string(16384 - 23, 'x') + "\r\n\r\n", "GET /? []"},
        {kPost + "Content-Length: 2\r\n\r\nabc", "POST /a? [ab] more"},
        {kPost + "content-length: 01\r\nContent-Length: 1\r\n\r\na", "POST /a? [a]"},
        {"POST / HTTP/1.0\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n", "wait"},
        {kPost + "Expect: 100-Continue\r\nContent-Length: 2\r\n\r\n", "wait, continue"},
        {kChunked + "1\r\na\r\n0A;b=\"c\"\r\n0123456789\r\n0\r\nT: u\r\n\r\nX",
         "POST /a? [a0123456789] more"},
    };
    for (const auto& [text, said] : cases)
        EXPECT_EQ(Say(text), said) << text.substr(0, 200);
}

// Each of the parts, put between `before` and `behind`.
static void ExpectAll(const char* said, const std::string& before,
                      const std::vector<std::string>& parts, const char* behind = "\r\n\r\n") {
    for (const std::string& part : parts)
        EXPECT_EQ(Say(before + part + behind), said) << before << part.substr(0, 200);
}

TEST(RequestGate, RefusesWhatCouldBeReadOtherwise) {
    ExpectAll("400", "",
              {"GET /", "GET  / HTTP/1.1", "GET / HTTP/1.1 HTTP/1.0", "G(T / HTTP/1.1",
               "GET a HTTP/1.1", "GET / http/1.1", "GET / HTTP/1.11", "GET /a%00b HTTP/1.1",
               "GET /\x7F HTTP/1.1", "GET http://h/ HTTP/1.1\r\nHost: i",
               "POST /a HTTP/1.0\r\nTransfer-Encoding: chunked"});
    ExpectAll("400", "\x16\x03\x01", {""}, ""); // a TLS client
    ExpectAll("505", "", {"GET / HTTP/1.2", "PRI * HTTP/2.0\r\n\r\nSM"});
    ExpectAll("400", kGet,
              {"A", ": b", "A : b", "A: b\r\n c", "A: b\rC: d", "Host: a\r\nHost: a",
               std::string("A: \0", 4),
               "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked"});
    ExpectAll("431", kGet, {Repeat(101, "X: y\r\n"), "A: " + std::string(16384 - 22, 'x')});
    ExpectAll("431", kGet, {"A: " + std::string(16384, 'x')}, "");
    ExpectAll("400", kPost + "Content-Length:",
              {" 1\r\nContent-Length: 2", " 1, 1", " +1", "", " 18446744073709551616",
               " 1\r\nTransfer-Encoding: chunked"});
    ExpectAll("413", kPost + "Content-Length:", {" 18446744073709551615", " 65536"});
    ExpectAll("501", kPost, {"Transfer-Encoding: gzip, chunked"});
    ExpectAll(
        "400", kChunked,
        {"1\n", "1\r\nab", "1\r\na\rb", "x\r\n", "1 b\r\n", "000000001\r\na", "0\r\nT\x01\r\n\r\n"},
        "");
    ExpectAll("413", kChunked, {"10000\r\n", "FFFFFFFE\r\n0\r\n\r\n", "FFFFFFFF\r\n"}, "");
}
