// SPDX-License-Identifier: GPL-2.0-only
// HTTP as clients expect it: connection reuse, order, limits and refusals.

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

#include "tests/support/HttpClient.h"
#include "tests/support/Recorder.h"
#include "tests/support/Sandbox.h"
#include "tests/system/Daemon.h"

namespace {

constexpr char kChunkedHead[] = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";

class Http : public SystemTest {};

TEST_F(Http, SendsBehindAFullSocketAndBehindFiles) {
    WriteFile("small.txt", "small");
    Daemon& daemon = Start();
    Shell("echo 4096 4096 4096 >/proc/sys/net/ipv4/tcp_wmem");
    Shell("echo 4096 65536 65536 >/proc/sys/net/ipv4/tcp_rmem");
    std::string requests;
    for (int i = 0; i < 2000; ++i)
        requests += "GET /get_cpu_usage HTTP/1.1\r\n\r\n";
    HttpClient full;
    full.Send(requests);
    full.EndInput();
    // No more is answered than is read, but for a bit.
    int answered = -1;
    while (answered != std::exchange(answered, Count(daemon.Output(), "handle_get_cpu_usage.")))
        usleep(200000);
    EXPECT_LT(answered, 1500);
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

// A recorder that takes 15 ms serves fewer than ask.
TEST_F(Http, AnswersEverybodyAndNobodyWhoIsGone) {
    Start();
    Recorder recorder;
    HttpClient clients[120];
    for (HttpClient& each : clients)
        each.Send(Request("/get_VersionInfo"));
    HttpClient().Send(Request("/set_NetWModeInfo"));
    int asked = 0, answered = 0, refused = 0;
    for (; recorder.HasMore(1000); ++asked) {
        EXPECT_EQ(recorder.Receive().find("DEVICE_SET"), std::string::npos);
        usleep(15000);
        recorder.Reply(QueryReply("<stVersion strAppVer=\"1\"/>"));
    }
    for (HttpClient& each : clients) {
        const std::string head = each.Read().head;
        answered += head == kChunkedHead;
        refused += head.find("503") == 9 && head.find("\r\nRetry-After: 1\r\n") != head.npos;
    }
    EXPECT_EQ(answered, asked);
    EXPECT_GE(refused, 1);
    EXPECT_EQ(answered + refused, 120);
}

TEST_F(Http, ServesWithinTheLimitOfDescriptors) {
    WriteFile("page.html", "page");
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit few{40, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    Start();
    setrlimit(RLIMIT_NOFILE, &limit);
    std::vector<std::unique_ptr<HttpClient>> idle;
    for (int i = 0; i < 60; ++i)
        idle.push_back(std::make_unique<HttpClient>());
    HttpClient client;
    client.Send(Request("/page.html"));
    EXPECT_EQ(client.Read().body, "page");
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
    const pid_t daemon = Start().Pid();
    HttpClient idle, started, active;
    started.Send("GET / HT");
    EXPECT_FALSE(idle.ClosedWithin(14));
    active.Send(Request("/none"));
    active.Read();
    EXPECT_FALSE(idle.ClosedWithin(14));
    EXPECT_TRUE(idle.ClosedWithin(20));
    EXPECT_TRUE(started.ClosedWithin(20));
    EXPECT_FALSE(active.ClosedWithin(5));
    // All the while it rested.
    clockid_t clock;
    timespec used{};
    ASSERT_EQ(clock_getcpuclockid(daemon, &clock), 0);
    ASSERT_EQ(clock_gettime(clock, &used), 0);
    EXPECT_LT(used.tv_sec, 3);
}

} // namespace
