// SPDX-License-Identifier: GPL-2.0-only
// HTTP as clients expect it: connection reuse, order, limits and refusals.

#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>

#include "tests/support/Sandbox.h"
#include "tests/system/Daemon.h"
#include "tests/system/HttpClient.h"
#include "tests/system/Recorder.h"

namespace {

constexpr char kChunkedHead[] = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";

class Http : public SystemTest {};

TEST_F(Http, ClosesWhenTheClientWantsThat) {
    const std::string page(200000, 'p');
    WriteFile("page.html", page);
    Start();
    const struct {
        const char* path;
        const char* version;
        const char* header;
        bool closed;
    } cases[] = {
        {"/get_cpu_usage", "1.1", "", false},
        {"/get_cpu_usage", "1.1", "Connection: close\r\n", true},
        {"/get_cpu_usage", "1.0", "", true},
        {"/page.html", "1.1", "", false},
        {"/page.html", "1.1", "Connection: close\r\n", true},
        {"/page.html", "1.0", "", true},
        {"/none.html", "1.0", "", true},
    };
    for (const auto& each : cases) {
        HttpClient client;
        client.Send(std::string("GET ") + each.path + " HTTP/" + each.version + "\r\n" +
                    each.header + "\r\n");
        const Answer answer = client.Read();
        EXPECT_NE(answer.body, "") << each.path;
        EXPECT_TRUE(std::string(each.path) != "/page.html" || answer.body == page);
        EXPECT_EQ(client.ClosedWithin(each.closed ? 5 : 0), each.closed)
            << each.path << " HTTP/" << each.version << " " << each.header;
    }
}

TEST_F(Http, AnswersPipelinedRequestsInOrder) {
    WriteFile("big.txt", std::string(300000, 'b'));
    WriteFile("small.txt", "small");
    Start();
    HttpClient client;
    // A POST without a length has no body; what follows it is the next request.
    client.Send(Request("/big.txt") + "POST /get_cpu_usage HTTP/1.1\r\n\r\n" +
                Request("/small.txt") + Request("/get_cpu_usage", "a=b") +
                Request("/small.txt", "", "Connection: close\r\n") + Request("/small.txt"));
    EXPECT_EQ(client.Read().body.size(), 300000u);
    EXPECT_EQ(client.Read().head, kChunkedHead);
    EXPECT_EQ(client.Read().body, "small");
    EXPECT_EQ(client.Read().head, kChunkedHead);
    EXPECT_EQ(client.Read().body, "small");
    EXPECT_TRUE(client.ClosedWithin(5));
}

TEST_F(Http, SendsBehindAFullSocketAndBehindFiles) {
    WriteFile("small.txt", "small");
    Start();
    Shell("echo 4096 4096 4096 >/proc/sys/net/ipv4/tcp_wmem");
    std::string requests;
    for (int i = 0; i < 2000; ++i)
        requests += "GET /get_cpu_usage HTTP/1.1\r\n\r\n";
    HttpClient full;
    full.Send(requests);
    for (int i = 0; i < 2000; ++i)
        ASSERT_EQ(full.Read().chunks.size(), 2u) << i;

    requests.clear();
    for (int i = 0; i < 20; ++i)
        requests += Request("/small.txt");
    HttpClient client;
    client.Send(requests);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(client.Read().body, "small");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(Http, HoldsAFileUpForOneExchangeOnly) {
    const std::string page(200000, 'p');
    WriteFile("page.html", page);
    Start();
    Recorder recorder;
    constexpr int kClients = 4, kPipelined = 3;
    HttpClient asking[kClients];
    std::string requests;
    for (int i = 0; i < kPipelined; ++i)
        requests += Request("/get_VersionInfo");
    for (HttpClient& each : asking)
        each.Send(requests);
    const std::string reply = QueryReply("<stVersion strAppVer=\"1\"/>");
    recorder.Receive();
    HttpClient newcomers[10], client;
    client.Send(Request("/page.html"));
    EXPECT_FALSE(recorder.HasMore(50)); // long enough for others to come before the next exchange
    recorder.Reply(reply);
    EXPECT_EQ(client.Read(3).body, page); // while that has no reply yet
    for (int i = 1; i < kClients * kPipelined; ++i) {
        recorder.Receive();
        recorder.Reply(reply);
    }
    for (int i = 0; i < kClients * kPipelined; ++i)
        EXPECT_EQ(asking[i % kClients].Read().body,
                  "{ \"strFD_AppVersion\": \"1\", \"result\": 1 }");
}

TEST_F(Http, RoutesExactPathsOnly) {
    WriteFile("index.html", "index");
    Daemon& daemon = Start();
    const struct {
        const char* path;
        bool routed;
    } cases[] = {
        {"/get_cpu_usage?x=1", true}, {"/get_CPU_usage", false},  {"/get_cpu_usage/", false},
        {"/get_cpu_usag", false},     {"/get_cpu_usage2", false}, {"/get%5Fcpu_usage", false},
    };
    for (const auto& each : cases) {
        HttpClient client;
        client.Send(Request(each.path));
        EXPECT_EQ(client.Read().head == kChunkedHead, each.routed) << each.path;
    }
    EXPECT_EQ(Count(daemon.Output(), "-------------------handle_get_cpu_usage.\n"), 1);
    EXPECT_EQ(Count(daemon.Output(), "------------others-------mg_serve_http.\n"), 5);
    HttpClient client;
    client.Send(Request("/"));
    EXPECT_EQ(client.Read().body, "index");
}

TEST_F(Http, DrawsTheCpuGaugeFromAnUnseededGenerator) {
    Start();
    for (int draw = 0; draw < 3; ++draw) {
        HttpClient client;
        client.Send(Request("/get_cpu_usage", draw % 2 ? "x=y" : ""));
        // This process has not drawn either, so that its generator gives the same numbers.
        const int usage = static_cast<int>(rand() / 2147483647.0 * 100.0);
        const Answer answer = client.Read();
        EXPECT_EQ(answer.head, kChunkedHead);
        EXPECT_EQ(answer.chunks,
                  (std::vector<std::string>{"{ \"strFD_SSID\": \"new \"",
                                            ", \"result\": " + std::to_string(usage) + " }"}));
    }
}

TEST_F(Http, AsksForTheBodyOfAnExpectingClient) {
    Start();
    Recorder recorder;
    HttpClient client;
    client.Send("POST /set_NetWModeInfo HTTP/1.1\r\nExpect: 100-continue\r\n"
                "Content-Length: 15\r\n\r\n");
    EXPECT_EQ(client.Read().head, "HTTP/1.1 100 Continue\r\n\r\n");
    client.Send("ucFD_Net");
    client.Send("WType=3");
    EXPECT_NE(recorder.Receive().find("ucFD_NetType=\"3\""), std::string::npos);
    recorder.Reply(SetReply(1));
    EXPECT_EQ(client.Read().head, kChunkedHead);
}

TEST_F(Http, ForgetsARequestWhoseClientVanishesInItsMidst) {
    Daemon& daemon = Start();
    Recorder recorder;
    const int descriptors = daemon.Descriptors();
    HttpClient().Send("POST /set_GNetInfo HTTP/1.1\r\nContent-Length: 99\r\n\r\nstrFD_Apn=half");
    HttpClient client;
    client.Send(Request("/get_cpu_usage")); // accepted after the other one was
    EXPECT_EQ(client.Read().head, kChunkedHead);
    EXPECT_TRUE(daemon.SettlesAt(descriptors + 1));
    EXPECT_FALSE(recorder.HasMore());
}

TEST_F(Http, RefusesOversizedAndMalformedRequests) {
    Start();
    const std::string large(65536, 'a');
    const struct {
        const char* what;
        std::string request;
        const char* status;
    } cases[] = {
        {"a body", Request("/get_cpu_usage", large), "413"},
        {"an announced body",
         "POST /get_cpu_usage HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 65500\r\n\r\n",
         "413"},
        {"headers", "GET / HTTP/1.1\r\nX: " + large, "413"},
        {"chunks", "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n10000\r\n" + large, "413"},
        {"no HTTP", "hello\r\n\r\n", "400"},
        {"a control byte", std::string("GET /\1 HTTP/1.1\r\n\r\n"), "400"},
        {"two lengths",
         "POST / HTTP/1.1\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n", "400"},
    };
    for (const auto& each : cases) {
        HttpClient client;
        client.Send(each.request);
        EXPECT_EQ(client.Read().head.substr(9, 3), each.status) << each.what;
        EXPECT_TRUE(client.ClosedWithin(5)) << each.what;
    }
    HttpClient client;
    client.Send(Request("/get_cpu_usage", std::string(65536 - 100, 'a')));
    EXPECT_EQ(client.Read().head, kChunkedHead);
}

TEST_F(Http, LetsNoOtherSiteUseTheApi) {
    WriteFile("page.html", "page");
    Daemon& daemon = Start({"--allow-host", "recorder.example", "--allow-host=r2.example"});
    Recorder recorder;
    const struct {
        const char* path;
        const char* headers;
        const char* status;
    } cases[] = {
        {"/set_WifiInfo", "Host: 127.0.0.1\r\nOrigin: http://evil.example\r\n", "403"},
        {"/get_WifiInfo", "Host: evil.example\r\n", "403"},
        {"/get_cpu_usage", "host: evil.example\r\n", "403"},
        {"/get_cpu_usage", "Host: r2.example\r\nOrigin: http://r2.example\r\n", "200"},
        {"/get_cpu_usage", "Host: recorder.example\r\n", "200"},
        {"/get_cpu_usage", "", "200"},
        {"/page.html", "Host: evil.example\r\n", "200"},
    };
    for (const auto& each : cases) {
        HttpClient client;
        client.Send(std::string("GET ") + each.path + " HTTP/1.1\r\n" + each.headers + "\r\n");
        EXPECT_EQ(client.Read().head.substr(9, 3), each.status) << each.path << each.headers;
    }
    EXPECT_EQ(Count(daemon.Output(), "CWebCtrl::DoHttpRequest, refused, host:"), 3);
    EXPECT_EQ(Count(daemon.Output(), "handle_get_cpu_usage."), 3);
    EXPECT_FALSE(recorder.HasMore());
}

TEST_F(Http, KeepsAtMost128ConnectionsAndServesTheNewest) {
    WriteFile("page.html", "page");
    Daemon& daemon = Start();
    const int idle = daemon.Descriptors();
    std::vector<std::unique_ptr<HttpClient>> slow;
    for (int i = 0; i < 200; ++i) {
        slow.push_back(std::make_unique<HttpClient>());
        slow.back()->Send("G");
    }
    HttpClient client;
    client.Send(Request("/page.html"));
    EXPECT_EQ(client.Read().body, "page");
    EXPECT_TRUE(daemon.SettlesAt(idle + 128));
    EXPECT_TRUE(slow.front()->ClosedWithin(5));
    EXPECT_FALSE(slow.back()->ClosedWithin(0));
}

TEST_F(Http, ClosesAConnectionIdleFor30Seconds) {
    Start();
    HttpClient idle;
    HttpClient started;
    started.Send("GET / HT");
    EXPECT_FALSE(idle.ClosedWithin(28));
    EXPECT_TRUE(idle.ClosedWithin(6));
    EXPECT_TRUE(started.ClosedWithin(6));
}

} // namespace
