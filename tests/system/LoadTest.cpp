// SPDX-License-Identifier: GPL-2.0-only
// Many clients, good and bad, against a recorder with faults: each answer is one that the recorder
// was told to send, and comes once; afterwards the daemon holds what it held before.
//
// WEBCTRL_LOAD_REQUESTS says how many requests; the full test has 100000.

#include <climits>
#include <iterator>
#include <mutex>
#include <set>

#include "tests/support/Daemon.h"

namespace {

#ifdef WEBCTRL_SANITIZED // which keeps memory for itself
constexpr int kUsualRequests = 3000, kMostGrowthKiB = INT_MAX;
#else
constexpr int kUsualRequests = 10000, kMostGrowthKiB = 128;
#endif
constexpr int kClients = 64, kBadClients = 200;
const std::string kBigFile(100000, 'b'), kPart(1000, 'p');

// What the clients ask for in turn. `#` is the number of the exchange, in a form of the request.
struct Ask {
    std::string path, form, reply, answer, failed;
} const kAsks[] = {
    {"/get_VersionInfo", "", R"(<stVersion strAppVer="#"/>)",
     R"({ "strFD_AppVersion": "#", "result": 1 })", R"({ "strFD_AppVersion": "", "result": 0 })"},
    {"/get_LangInfo", "", R"(<stDisplay strLanguage="CN"/>)",
     R"({ "strLanguage": "CN", "result": 1 })", R"({ "strLanguage": "EN", "result": 0 })"},
    {"/set_GNetInfo", "strFD_Apn=#&strFD_UserName=%22#%3C", "", R"({"result": 1 })",
     R"({"result": 0 })"},
    {"/big.txt", "", "", kBigFile, ""},
    {"/page.shtml", "", "", "value1" + kPart, ""},
};
constexpr char kWritten[] = R"(<stMobileGNet ucFD_NetType="0" strFD_Apn="#" strFD_PhoneNo="" )"
                            R"(strFD_UserName="&quot;#&lt;" strFD_UserPasswd=""/>)";
// Never carried out: its client vanishes.
constexpr char kHalfWrite[] =
    "POST /set_GNetInfo HTTP/1.1\r\nContent-Length: 99\r\n\r\nstrFD_Apn=never";

std::string Fill(std::string text, const std::string& number) {
    for (size_t at; (at = text.find('#')) != std::string::npos;)
        text.replace(at, 1, number);
    return text;
}

// What stands in `text` where the mark is in `pattern`, up to the next quote.
std::string Number(const std::string& pattern, const std::string& text) {
    const size_t at = std::min(pattern.find('#'), text.size());
    return text.substr(at, text.find('"', at) - at);
}

class Load : public SystemTest {
protected:
    // Answers soundly or with garbage.
    void PlayRecorder(Recorder& recorder) {
        static const std::string kGarbage[] = {"", "\x01\xFE<<&&\"'>", "<VariCfgSec",
                                               std::string(1030, ' ') + SetReply(0)};
        static const std::string kWrite = SetMessage(kWritten);
        for (int turn = 0; !m_stop;) {
            if (!recorder.HasMore(20))
                continue;
            const std::string datagram = recorder.Receive();
            std::string reply = SetReply(3);
            if (datagram.find("stVersion") != std::string::npos)
                reply = QueryReply(Fill(kAsks[0].reply, std::to_string(turn)));
            else if (datagram.find("stDisplay") != std::string::npos)
                reply = QueryReply(kAsks[1].reply);
            else
                EXPECT_EQ(datagram, Fill(kWrite, Number(kWrite, datagram)));
            const bool isGarbled = ++turn % 23 == 7;
            m_faults += isGarbled;
            recorder.Reply(isGarbled ? kGarbage[turn % std::size(kGarbage)] : reply);
        }
    }
    void Check(const Ask& ask, const std::string& body) {
        const bool failed = !ask.failed.empty() && body == ask.failed;
        const std::string number = failed ? "" : Number(ask.answer, body);
        EXPECT_EQ(body, failed ? ask.failed : Fill(ask.answer, number)) << ask.path;
        m_failed += failed;
        const std::lock_guard<std::mutex> guard(m_mutex);
        EXPECT_TRUE(number.empty() || m_numbers.insert(number).second) << number << " came twice";
    }
    // In turn one request, and four at once.
    void AskInTurn() {
        HttpClient client;
        for (int count = 1, last; (last = m_left -= count) >= 0 && !HasFailure();
             count = 5 - count) {
            const auto ask = [last](int i) { return kAsks[(last + i) % std::size(kAsks)]; };
            std::string requests;
            for (int i = 0; i < count; ++i)
                requests += Request(ask(i).path, Fill(ask(i).form, std::to_string(last + i)));
            client.Send(requests);
            for (int i = 0; i < count; ++i)
                Check(ask(i), client.Read().body);
        }
    }
    void Storm(int requests) {
        m_left = requests;
        std::vector<std::thread> clients;
        for (int i = 0; i < kClients; ++i)
            clients.emplace_back([&] { AskInTurn(); });
        std::vector<HttpClient> slow;
        for (int i = 0; i < kBadClients && !HasFailure(); ++i) {
            slow.emplace_back().Send("G");
            for (const char* half : {"GET /get_Ver", kHalfWrite, "GET /get_Ver", kHalfWrite})
                HttpClient().Send(half);
        }
        for (std::thread& client : clients)
            client.join();
        EXPECT_EQ(m_failed, m_faults);
    }

    std::atomic<int> m_left{0}, m_failed{0}, m_faults{0};
    std::atomic<bool> m_stop{false};
    std::mutex m_mutex;
    std::set<std::string> m_numbers;
};

// After the second of rest in which the daemon gives back what it does not need.
int PrivateDirtyKiB(pid_t pid) {
    const std::string file = " /proc/" + std::to_string(pid) + "/smaps_rollup";
    const auto print = [&] { Shell("sleep 2.5; awk '/^Private_Dirty:/ { print $2 }'" + file); };
    return std::stoi(Capture(print).out);
}

TEST_F(Load, AnswersRightAndGivesAllBack) {
    const char* wanted = getenv("WEBCTRL_LOAD_REQUESTS");
    const int requests = wanted != nullptr ? atoi(wanted) : kUsualRequests;
    WriteFile("big.txt", kBigFile);
    WriteFile("part.txt", kPart);
    WriteFile("page.shtml", R"(<!--#call setting1 --><!--#include file="part.txt" -->)");
    Daemon& daemon = Start();
    const int descriptors = daemon.Descriptors();
    Recorder recorder; // is there before the first datagram
    std::thread player([&] { PlayRecorder(recorder); });
    int before = 0;
    for (const int count : {std::max(requests / 10, 2000), requests}) { // first a warm-up
        Storm(count);
        EXPECT_TRUE(daemon.SettlesAt(descriptors)) << daemon.Descriptors();
        const int grown = PrivateDirtyKiB(daemon.Pid()) - before;
        printf("%d requests, %d faults; grown by %d KiB\n", count, m_faults.load(), grown);
        EXPECT_TRUE(before == 0 || grown <= kMostGrowthKiB);
        before += grown;
    }
    m_stop = true;
    player.join();
}

} // namespace
