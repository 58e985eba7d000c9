// SPDX-License-Identifier: GPL-2.0-only
// Many clients, good and bad, against a recorder with faults: each answer is one that the recorder
// was told to send, and comes once; afterwards the daemon holds what it held before.
//
// WEBCTRL_LOAD_REQUESTS says how many requests; the full test has 100000.

#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <mutex>
#include <set>
#include <thread>

#include "tests/support/HttpClient.h"
#include "tests/support/Recorder.h"
#include "tests/system/Daemon.h"

namespace {

#ifdef WEBCTRL_SANITIZED
constexpr bool kSanitized = true; // memory is not judged: a sanitizer keeps it for itself
#else
constexpr bool kSanitized = false;
#endif
constexpr int kUsualRequests = kSanitized ? 3000 : 10000;
constexpr int kClients = 64, kBadClients = 200;
constexpr int kMostGrowthKiB = 128;
const std::string kBigFile(100000, 'b'), kPart(1000, 'p');

// What the clients ask for in turn. `#` is the number of the exchange, in a form of the request.
struct Ask {
    std::string path, form, reply, answer, failed;
} const kAsks[] = {
    {"/get_VersionInfo", "", R"(<stVersion strAppVer="#"/>)",
     R"({ "strFD_AppVersion": "#", "result": 1 })", R"({ "strFD_AppVersion": "", "result": 0 })"},
    {"/small.txt", "", "", "small", ""},
    {"/get_LangInfo", "", R"(<stDisplay strLanguage="CN"/>)",
     R"({ "strLanguage": "CN", "result": 1 })", R"({ "strLanguage": "EN", "result": 0 })"},
    {"/set_GNetInfo", "strFD_Apn=#&strFD_UserName=%22#%3C", "", R"({"result": 1 })",
     R"({"result": 0 })"},
    {"/big.txt", "", "", kBigFile, ""},
    {"/page.shtml", "", "", "value1" + kPart, ""},
};
constexpr int kAskCount = std::size(kAsks);
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

// What stands between the first two quotes behind `mark`.
std::string Quoted(const std::string& text, const std::string& mark) {
    const size_t at = text.find(mark) + mark.size();
    return text.substr(at, text.find('"', at) - at);
}

class Load : public SystemTest {
protected:
    // Answers soundly, late, with garbage or from a foreign port. The first query of a storm is
    // lost, the first write accepted: pauses of 5 s and 2 s.
    void PlayRecorder(Recorder& recorder, Recorder& stranger) {
        static const std::string kGarbage[] = {"", "\x01\xFE<<&&\"'>", "<VariCfgSec",
                                               std::string(1030, ' ') + SetReply(0)};
        while (!m_stop) {
            if (!recorder.HasMore(20))
                continue;
            const std::string datagram = recorder.Receive();
            const int turn = ++m_exchanges;
            const bool isWrite = datagram.find("DEVICE_SET") != std::string::npos;
            const bool isLost = !isWrite && m_loses.exchange(false);
            const bool isForeign = turn % 53 == 9, isGarbled = turn % 41 == 7;
            const bool isBad = isForeign || isGarbled || isLost;
            m_faults += isBad;
            std::string reply = SetReply(!isBad && isWrite && m_accepts.exchange(false) ? 0 : 3);
            if (isWrite)
                EXPECT_EQ(datagram, SetMessage(Fill(kWritten, Quoted(datagram, "Apn=\""))));
            else
                reply = QueryReply(datagram.find("stVersion") != std::string::npos
                                       ? Fill(kAsks[0].reply, std::to_string(turn))
                                       : kAsks[2].reply);
            if (turn % 97 == 0)
                std::this_thread::sleep_for(std::chrono::milliseconds(3)); // a late reply
            if (!isLost)
                (isForeign ? stranger : recorder).Reply(isGarbled ? kGarbage[turn % 4] : reply);
        }
    }
    void Check(const Ask& ask, const std::string& body) {
        const std::string number =
            ask.answer.find('#') == std::string::npos ? "" : Quoted(body, "Version\": \"");
        if (!ask.failed.empty() && body == ask.failed) {
            ++m_failed;
            return;
        }
        EXPECT_EQ(body, Fill(ask.answer, number)) << ask.path;
        const std::lock_guard<std::mutex> guard(m_mutex);
        EXPECT_TRUE(number.empty() || m_numbers.insert(number).second) << number << " came twice";
    }
    // In turn one request, and four at once.
    void AskInTurn() {
        HttpClient client;
        for (int count = 1; !HasFailure(); count = 5 - count) {
            const int first = m_asked.fetch_add(count);
            if (first >= m_last)
                return;
            std::string requests;
            for (int i = first; i < first + count; ++i)
                requests += Request(kAsks[i % kAskCount].path,
                                    Fill(kAsks[i % kAskCount].form, std::to_string(i)));
            client.Send(requests);
            for (int i = first; i < first + count; ++i)
                Check(kAsks[i % kAskCount], client.Read(30).body);
        }
    }
    void Storm(int requests) {
        const int first = m_asked;
        m_last = first + requests;
        std::vector<std::thread> clients;
        for (int i = 0; i < kClients; ++i)
            clients.emplace_back([&] { AskInTurn(); });
        std::vector<std::unique_ptr<HttpClient>> slow;
        for (int i = 0; i < kBadClients && !HasFailure(); ++i) {
            slow.push_back(std::make_unique<HttpClient>());
            slow.back()->Send("G");
            for (const char* half : {"GET /get_Ver", kHalfWrite, "GET /get_Ver", kHalfWrite})
                HttpClient().Send(half);
            HttpClient oversized;
            oversized.Send(Request("/get_GNetInfo", std::string(70000, 'x')));
            EXPECT_EQ(oversized.Read().head.substr(9, 3), "413");
        }
        for (std::thread& client : clients)
            client.join();
        EXPECT_EQ(m_failed, m_faults);
    }

    std::atomic<int> m_asked{0}, m_last{0}, m_failed{0}, m_faults{0}, m_exchanges{0};
    std::atomic<bool> m_stop{false}, m_loses{false}, m_accepts{false};
    std::mutex m_mutex;
    std::set<std::string> m_numbers;
};

// After the second of rest in which the daemon gives back what it does not need.
int PrivateDirtyKiB(pid_t pid) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    std::ifstream file("/proc/" + std::to_string(pid) + "/smaps_rollup");
    int size = 0;
    for (std::string word; word != "Private_Dirty:" && file >> word;)
        ;
    EXPECT_TRUE(file >> size);
    return size;
}

TEST_F(Load, AnswersRightAndGivesAllBack) {
    const char* wanted = getenv("WEBCTRL_LOAD_REQUESTS");
    const int requests = wanted != nullptr ? atoi(wanted) : kUsualRequests;
    WriteFile("small.txt", "small");
    WriteFile("big.txt", kBigFile);
    WriteFile("part.txt", kPart);
    WriteFile("page.shtml", R"(<!--#call setting1 --><!--#include file="part.txt" -->)");
    Daemon& daemon = Start();
    const int descriptors = daemon.Descriptors();
    Recorder own, stranger(6001); // are there before the first datagram
    std::thread recorder([&] { PlayRecorder(own, stranger); });
    Storm(std::max(requests / 10, 2000)); // warm-up
    EXPECT_TRUE(daemon.SettlesAt(descriptors)) << daemon.Descriptors();
    const int before = PrivateDirtyKiB(daemon.Pid());
    m_loses = m_accepts = true;
    Storm(requests);
    EXPECT_FALSE(m_loses || m_accepts);
    EXPECT_TRUE(daemon.SettlesAt(descriptors)) << daemon.Descriptors();
    const int growth = PrivateDirtyKiB(daemon.Pid()) - before;
    m_stop = true;
    recorder.join();
    printf("%d requests, %d exchanges, %d faults; %d KiB before, grown by %d\n", m_asked.load(),
           m_exchanges.load(), m_faults.load(), before, growth);
    EXPECT_TRUE(kSanitized || growth <= kMostGrowthKiB) << growth << " KiB";
}

} // namespace
