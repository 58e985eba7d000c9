// SPDX-License-Identifier: GPL-2.0-only
// What takes more than a request and its answer: many clients, limits, time, TLS.

#include <sys/resource.h>
#include <utility>

#include "tests/support/Daemon.h"

namespace {

const std::string kReply = QueryReply("<stVersion strAppVer=\"1\"/>");

const std::string kPage(100000, 'p');

class Server : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        WriteFile("page.html", kPage);
    }
    static void ExpectPage(HttpClient& client) {
        client.Send(Request("/page.html"));
        EXPECT_TRUE(client.Read().body == kPage);
    }
};

TEST_F(Server, SendsBehindAFullSocket) {
    Daemon& daemon = Start();
    Shell("echo 4096 4096 4096 >/proc/sys/net/ipv4/tcp_wmem");
    Shell("echo 4096 65536 65536 >/proc/sys/net/ipv4/tcp_rmem");
    HttpClient full;
    std::string requests; // at once: so many small segments would fill the daemon's socket
    for (int i = 0; i < 2000; ++i)
        requests += std::string(i % 8 ? "GET" : "HEAD") + " /get_cpu_usage HTTP/1.1\r\n\r\n";
    full.Send(requests + "HEAD / HTTP/3.0\r\n\r\n");
    full.EndInput();
    // No more is answered than is read, but for a bit.
    size_t printed = 1;
    while (printed != std::exchange(printed, daemon.Output().size()))
        usleep(200000);
    EXPECT_LT(printed, 1500 * 90); // in two lines
    for (int i = 0; i < 2000; ++i)
        ASSERT_EQ(full.Read(i % 8 != 0).chunks.size(), i % 8 ? 2u : 0u) << i;
    EXPECT_EQ(full.Read(false).head.substr(0, 12), "HTTP/1.1 505");
    // What comes behind a last request is neither kept nor costs its answer.
    WriteFile("page.shtml", kPage.substr(0, 90000));
    HttpClient last;
    last.Send("GET /page.shtml HTTP/1.1\r\nConnection: close\r\n\r\n");
    last.Send(std::string(1 << 20, 'x'));
    EXPECT_EQ(last.Read().body.size(), 90000u);
}

TEST_F(Server, HoldsAFileUpForOneExchangeOnly) {
    Daemon& daemon = Start();
    Recorder recorder;
    constexpr int kClients = 4, kPipelined = 3;
    HttpClient asking[kClients];
    for (HttpClient& each : asking)
        for (int i = 0; i < kPipelined; ++i)
            each.Send(Request("/get_VersionInfo"));
    recorder.Receive();
    daemon.WaitFor("stVersion"); // what is printed is there before a long wait
    HttpClient newcomers[10], client;
    client.Send(Request("/page.html"));
    EXPECT_FALSE(recorder.HasMore(50)); // long enough for others to come before the next exchange
    recorder.Reply(kReply);
    // The next one waits for its reply, and fails behind it.
    EXPECT_TRUE(client.Read().body == kPage);
    for (int i = 1; i < kClients * kPipelined; ++i) {
        recorder.Receive();
        recorder.Reply(kReply);
    }
    for (int i = 0; i < kClients * kPipelined; ++i)
        EXPECT_EQ(asking[i % kClients].Read().body,
                  "{ \"strFD_AppVersion\": \"1\", \"result\": 1 }");
}

// A recorder that takes 15 ms serves fewer than ask.
TEST_F(Server, AnswersEverybodyAndNobodyWhoIsGone) {
    Start();
    Recorder recorder;
    HttpClient first;
    first.Send(Request("/get_VersionInfo"));
    recorder.Receive();
    HttpClient().Send(Request("/set_NetWModeInfo"));
    HttpClient clients[120];
    for (HttpClient& each : clients)
        each.Send(Request("/get_VersionInfo"));
    EXPECT_FALSE(recorder.HasMore(50)); // so long an exchange lets others have their turn
    recorder.Reply(kReply);
    std::atomic<bool> stop{false};
    int asked = 0, answered = 0, refused = 0;
    std::thread player([&] {
        while (!stop) {
            if (!recorder.HasMore(20))
                continue;
            EXPECT_EQ(recorder.Receive().find("DEVICE_SET"), std::string::npos);
            usleep(15000);
            recorder.Reply(kReply);
            ++asked;
        }
    });
    for (HttpClient& each : clients) {
        const Answer answer = each.Read();
        answered += answer.chunks.size() == 2;
        refused += answer.head.find(
                       " 503 Service Unavailable\r\nConnection: close\r\nRetry-After: 1\r\n") !=
                   std::string::npos;
    }
    stop = true;
    player.join();
    EXPECT_EQ(answered, asked);
    EXPECT_GE(refused, 1);
    EXPECT_EQ(answered + refused, 120);
}

TEST_F(Server, DoesNotRestWhileRequestsLieThere) {
    Start();
    HttpClient client;
    // Sends `requests` so many times, each behind an answer, and reads 160 answers.
    const auto took = [&](int times, const std::string& requests) {
        const auto begin = std::chrono::steady_clock::now();
        for (int i = 0; i < 160; ++i) {
            if (i < times)
                client.Send(requests);
            client.Read();
        }
        return std::chrono::steady_clock::now() - begin;
    };
    std::string all;
    for (int i = 0; i < 160; ++i)
        all += Request("/get_cpu_usage");
    const auto oneByOne = took(160, Request("/get_cpu_usage"));
    EXPECT_LT(took(1, all), 50 * oneByOne);
}

TEST_F(Server, ReadsOnForASecondBehindARefusal) {
    Start();
    HttpClient idle, client;
    const auto begin = std::chrono::steady_clock::now();
    client.Send("GET / HTTP/3.0\r\n\r\n");
    while (client.Send("GET / HTTP/1.1\r\n\r\n"))
        usleep(10000);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    EXPECT_EQ(client.Read().head.find("HTTP/1.1 505 "), 0u);
    EXPECT_TRUE(client.ClosedWithin(0) && !idle.ClosedWithin(0)); // which has 30
}

TEST_F(Server, ServesTheNewestWhereThereIsNoRoom) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    // A limit of descriptors, and the connections that leaves.
    for (const auto& [most, connections] : {std::pair{limit.rlim_cur, 128}, {36, 10}, {15, 1}}) {
        const rlimit few{most, limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
        Daemon& daemon = Start();
        setrlimit(RLIMIT_NOFILE, &limit);
        const int idle = daemon.Descriptors();
        HttpClient first;
        ExpectPage(first);
        usleep(2000); // the daemon counts milliseconds
        std::vector<std::unique_ptr<HttpClient>> slow;
        for (int i = 0; i < connections * 5 / 4 + 2; ++i) {
            slow.push_back(std::make_unique<HttpClient>());
            slow.back()->Send("G");
        }
        HttpClient client;
        ExpectPage(client);
        EXPECT_TRUE(first.ClosedWithin(5));
        EXPECT_TRUE(daemon.SettlesAt(idle + connections)) << daemon.Descriptors() - idle;
        EXPECT_TRUE(connections == 1 || !slow.back()->ClosedWithin(0));
    }
}

TEST_F(Server, ClosesAConnectionIdleFor30Seconds) {
    const std::string pid = std::to_string(Start().Pid());
    HttpClient idle, started, active;
    started.Send("GET / HT");
    EXPECT_FALSE(idle.ClosedWithin(14));
    ExpectPage(active);
    EXPECT_FALSE(idle.ClosedWithin(14));
    EXPECT_TRUE(idle.ClosedWithin(20));
    EXPECT_TRUE(started.ClosedWithin(20));
    EXPECT_FALSE(active.ClosedWithin(5));
    // All the while it rested; in hundredths of a second.
    Shell("awk '$14 + $15 >= 300 { exit 1 }' /proc/" + pid + "/stat");
}

TEST_F(Server, IsDelayedByNoFloodOfItsControlPort) {
    Start();
    std::atomic<bool> stop{false};
    std::thread flood([&] {
        Recorder peer(6002);
        while (!stop)
            peer.Reply("x");
    });
    HttpClient client;
    client.Send(Request("/get_LangInfo"));
    EXPECT_EQ(client.Read().body, "{ \"strLanguage\": \"EN\", \"result\": 0 }");
    stop = true;
    flood.join();
}

TEST_F(Server, TakesAnExecutablePathOf127BytesAndNoLonger) {
    for (const size_t bytes : {127, 128}) {
        // A folder so deep that the path of the executable, FOLDER/webctrl, has that length.
        const std::string folder =
            Folder() + "/" + std::string(bytes - Folder().size() - sizeof("/webctrl"), 'd');
        Shell("mkdir " + folder);
        Daemon daemon(folder);
        // Of "web_root" one byte more is cut off than the path has.
        daemon.WaitFor(bytes == 127 ? "/web_roo\n" : "***Error***\n");
        EXPECT_TRUE(bytes == 127 || daemon.Wait() == 255);
    }
}

#ifdef WITH_TLS
TEST_F(Server, SpeaksTlsAlone) {
    const std::pair<const char*, std::string> cases[] = {
        {"https://127.0.0.1/page.html https://127.0.0.1/none", kPage + "Not found\n"},
        {"--tls-max 1.2 https://127.0.0.1/page.html", kPage},
        {"--tls-max 1.1 --ciphers ALL:@SECLEVEL=0 https://127.0.0.1/page.html", ""},
        {"http://127.0.0.1:443/page.html", ""},
    };
    const std::string pem = Folder() + "/pem";
    Shell("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=x -addext"
          " subjectAltName=IP:127.0.0.1 -keyout " +
          pem + " -out " + pem + " 2>/dev/null");
    Daemon& daemon = Start("--tls-cert " + pem + " --tls-key " + pem);
    const int descriptors = daemon.Descriptors();
    {
        HttpClient silent(443), broken(443), endless(443);
        broken.Send("GET /page.html HTTP/1.1\r\n\r\n");
        endless.Send("\x16\x03\x01\x40"); // the head of a record
        for (const auto& [options, answer] : cases) {
            const std::string command = "curl -s -m 20 --cacert " + pem + " " + options;
            EXPECT_EQ(Capture([&] { EXPECT_NE(system(command.c_str()), -1); }).out, answer)
                << options;
        }
        // It tells its end, also behind a refusal: without that, the client's status is 1.
        for (const std::string version : {"1.0", "3.0"})
            Shell("printf 'GET / HTTP/" + version +
                  "\\r\\n\\r\\n' | openssl s_client -quiet -connect 127.0.0.1:443 >/dev/null 2>&1");
        EXPECT_TRUE(daemon.SettlesAt(descriptors + 2));
    }
    EXPECT_TRUE(daemon.SettlesAt(descriptors));
}
#endif

} // namespace
