// SPDX-License-Identifier: GPL-2.0-only
// Many clients, good and bad, against a recorder with faults: each answer is compared with what
// the recorder was told to send, and the daemon holds what it held before.
//
// WEBCTRL_LOAD_REQUESTS says how many requests; the full test has 100000.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include "tests/system/Api.h"

namespace {

using std::chrono::steady_clock;

#ifdef WEBCTRL_SANITIZED
constexpr bool kSanitized = true; // memory is not judged: a sanitizer keeps it for itself
#else
constexpr bool kSanitized = false;
#endif
constexpr int kUsualRequests = kSanitized ? 3000 : 10000;
constexpr int kClients = 64, kSlowClients = 200, kVanishing = 1000;
constexpr int kMostGrowthKiB = 128;

// A section that is asked for: `#` stands for the number of the exchange.
struct Section {
    const char* path;
    const char* element;
    const char* reply;
    const char* answer; // when the reply is sound and the last one of its request
    const char* failed; // when it is not sound
};
const Section kSections[] = {
    {"/get_VersionInfo", "stVersion /", R"(<stVersion strAppVer="v#"/>)",
     R"({ "strFD_AppVersion": "v#", "result": 1 })", R"({ "strFD_AppVersion": "", "result": 0 })"},
    {"/get_GNetInfo", "stMobileGNet",
     R"(<stMobileGNet ucFD_NetType="6" strFD_Apn="a#" strFD_UserName="&quot;#&lt;"/>)",
     R"({ "ucFD_NetType": "6", "strFD_Apn": "a#", "strFD_PhoneNo": "", "strFD_UserName": "\"#\u003c", "strFD_UserPasswd": "", "result": 1 })",
     R"({ "ucFD_NetType": "0", "strFD_Apn": "", "strFD_PhoneNo": "", "strFD_UserName": "", "strFD_UserPasswd": "", "result": 0 })"},
    {"/get_WifiInfo", "stWifi", R"(<stWifi ucFD_WorkMode="2" strFD_SSID="client"/>)", "",
     R"({ "ucFD_WorkMode": "0", "strFD_SSID": "", "strFD_Passwd": "", "ucFD_AuthMode": "0", "ucFD_CryptType": "0", "ucFD_DhcpEnableFlag": "0", "result": 0 })"},
    {"/get_WifiInfo", "stWifiAp", R"(<stWifiAp strFD_SSID="s#" strFD_Passwd="p#"/>)",
     R"({ "ucFD_WorkMode": "2", "strFD_SSID": "s#", "strFD_Passwd": "p#", "ucFD_AuthMode": "0", "ucFD_CryptType": "0", "ucFD_DhcpEnableFlag": "0", "result": 1 })",
     R"({ "ucFD_WorkMode": "2", "strFD_SSID": "client", "strFD_Passwd": "", "ucFD_AuthMode": "0", "ucFD_CryptType": "0", "ucFD_DhcpEnableFlag": "0", "result": 0 })"},
};
// A write carries the number of its client's making.
constexpr char kWritePath[] = "/set_GNetInfo";
constexpr char kWriteBody[] = "strFD_Apn=#&strFD_UserName=%22#%3C";
constexpr char kWriteMessage[] =
    R"(<stMobileGNet ucFD_NetType="0" strFD_Apn="#" strFD_PhoneNo="" strFD_UserName="&quot;#&lt;" strFD_UserPasswd=""/>)";

// What must never be carried out.
constexpr char kHalfWrite[] =
    "POST /set_GNetInfo HTTP/1.1\r\nContent-Length: 99\r\n\r\nstrFD_Apn=never";

std::string Fill(std::string text, const std::string& number) {
    for (size_t at; (at = text.find('#')) != std::string::npos;)
        text.replace(at, 1, number);
    return text;
}

// The recorder: replies in turn soundly, late, with garbage, from a foreign port or, a few times,
// not at all, and remembers which answers these lead to.
class Script {
public:
    Script() : m_thread([this] { Run(); }) {}
    ~Script() {
        m_stop = true;
        m_thread.join();
    }
    // Whether an answer is to be expected, once more.
    bool Take(const std::string& answer) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        const auto found = m_expected.find(answer);
        return found != m_expected.end() && (m_expected.erase(found), true);
    }
    size_t Untaken() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_expected.size();
    }

    // Every so many queries one is lost and the next write accepted: pauses of 5 s and 2 s.
    std::atomic<int> pauseEvery{0}, pauses{0}, exchanges{0};
    // When the latest of them is over at the latest.
    std::atomic<steady_clock::time_point> pausedUntil{};

private:
    void Run() {
        while (!m_stop) {
            if (m_recorder.HasMore(20))
                Exchange(m_recorder.Receive());
        }
    }
    void Exchange(const std::string& datagram) {
        const int turn = ++exchanges;
        const bool isWrite = datagram.find("DEVICE_SET") != std::string::npos;
        const bool lost = pauseEvery > 0 && !isWrite && ++m_sincePause == pauseEvery;
        const bool foreign = turn % 53 == 9, garbled = turn % 41 == 7;
        const bool sound = !lost && !foreign && !garbled;
        const bool accepted = isWrite && sound && m_accepts;
        m_sincePause = lost ? 0 : m_sincePause;
        m_accepts = lost || (m_accepts && !accepted);
        if (lost || accepted) {
            pausedUntil = steady_clock::now() + std::chrono::seconds(6);
            ++pauses;
        }
        const std::string reply =
            isWrite ? NoteWrite(datagram, sound, accepted) : NoteQuery(datagram, turn, sound);
        if (turn % 97 == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(3)); // a late reply
        if (!lost)
            (foreign ? m_stranger : m_recorder).Reply(garbled ? kGarbage[turn % 5] : reply);
    }
    std::string NoteWrite(const std::string& datagram, bool sound, bool accepted) {
        const size_t at = datagram.find("Apn=\"") + 5;
        const std::string number = datagram.substr(at, datagram.find('"', at) - at);
        EXPECT_EQ(datagram, Set(Fill(kWriteMessage, number)));
        Expect(kWritePath + number + "{\"result\": " + (sound ? "1" : "0") + " }");
        return SetReply(accepted ? 0 : 3);
    }
    std::string NoteQuery(const std::string& datagram, int turn, bool sound) {
        for (const Section& section : kSections) {
            if (datagram != Query(section.element))
                continue;
            const std::string answer = sound ? section.answer : section.failed;
            if (!answer.empty())
                Expect(section.path + Fill(answer, std::to_string(turn)));
            return QueryReply(Fill(section.reply, std::to_string(turn)));
        }
        ADD_FAILURE() << datagram;
        return "";
    }
    void Expect(const std::string& answer) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_expected.insert(answer);
    }

    static inline const std::string kGarbage[] = {
        "", "\x01\xFE<<&&\"'>", "<VariCfgSec", "<VariCfgSec Result=\"0\" Action=\"DEVICE_SET\"/>",
        std::string(1030, ' ') + SetReply(0)};
    Recorder m_recorder, m_stranger{6001};
    std::mutex m_mutex;
    std::multiset<std::string> m_expected; // path, number of a write, body
    int m_sincePause = 0;
    bool m_accepts = false;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

class Load : public SystemTest {
protected:
    // What the clients ask for in turn.
    const Texts kPaths = {"/get_VersionInfo", "/small.txt",     "/get_GNetInfo", kWritePath,
                          "/get_WifiInfo",    "/get_cpu_usage", "/big.txt"};
    const std::map<std::string, std::string> kFiles = {{"/small.txt", "small"},
                                                       {"/big.txt", std::string(100000, 'b')}};
    const std::string& Path(int number) {
        return kPaths[static_cast<size_t>(number) % kPaths.size()];
    }
    bool IsRight(Script& script, int number, const std::string& body) {
        const std::string& path = Path(number);
        const auto file = kFiles.find(path);
        if (file != kFiles.end())
            return body == file->second;
        if (path == "/get_cpu_usage")
            return body.find(R"({ "strFD_SSID": "new ", "result": )") == 0;
        return script.Take(path + (path == kWritePath ? std::to_string(number) : "") + body);
    }
    // One of the 64 clients: in turn it sends one request, or four at once.
    void AskInTurn(Script& script) {
        HttpClient client;
        for (int count = 1; !HasFailure(); count = 5 - count) {
            const int first = m_asked.fetch_add(count);
            if (first >= m_last)
                return;
            std::string requests;
            for (int i = first; i < first + count; ++i) {
                const std::string form = Fill(kWriteBody, std::to_string(i));
                requests += Request(Path(i), Path(i) == kWritePath ? form : "");
            }
            client.Send(requests);
            for (int i = first; i < first + count; ++i, ++m_answered) {
                const std::string body = client.Read(30).body;
                EXPECT_TRUE(IsRight(script, i, body)) << Path(i) << " got " << body;
            }
        }
    }
    // Another client's file comes at once, or after the one exchange that is in progress.
    void FetchFile(Script& script) {
        const auto start = steady_clock::now();
        HttpClient client;
        client.Send(Request("/small.txt"));
        EXPECT_EQ(client.Read().body, "small");
        const std::chrono::duration<double> took = steady_clock::now() - start;
        const bool paused = script.pausedUntil.load() > start;
        double& slowest = paused ? m_slowestFileInPause : m_slowestFile;
        slowest = std::max(slowest, took.count());
    }
    void Storm(Script& script, int requests) {
        const int first = m_asked;
        m_last = first + requests;
        std::vector<std::thread> clients;
        for (int i = 0; i < kClients; ++i)
            clients.emplace_back([&] { AskInTurn(script); });
        std::vector<std::unique_ptr<HttpClient>> slow;
        for (int i = 0; i < kSlowClients && !HasFailure(); ++i) {
            slow.push_back(std::make_unique<HttpClient>());
            slow.back()->Send("G");
            for (int vanishing = 0; vanishing < kVanishing / kSlowClients; ++vanishing)
                HttpClient().Send(vanishing % 2 == 0 ? "GET /get_Ver" : kHalfWrite);
            HttpClient oversized;
            oversized.Send(Request("/get_GNetInfo", std::string(70000, 'x')));
            EXPECT_EQ(oversized.Read().head.substr(9, 3), "413");
            do
                FetchFile(script);
            while (m_asked - first < 1.0 * i / kSlowClients * requests && !HasFailure());
        }
        for (std::thread& client : clients)
            client.join();
        EXPECT_EQ(script.Untaken(), 0u);
        EXPECT_LT(m_slowestFile, 1);
        EXPECT_LT(m_slowestFileInPause, 6);
    }

    std::atomic<int> m_asked{0}, m_last{0}, m_answered{0};
    double m_slowestFile = 0, m_slowestFileInPause = 0;
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
    const int losses = std::min(1 + requests / 30000, 4);
    for (const auto& file : kFiles)
        WriteFile(file.first, file.second);
    Daemon& daemon = Start();
    const int descriptors = daemon.Descriptors();
    Script script;
    Storm(script, std::max(requests / 10, 2000)); // warm-up
    EXPECT_TRUE(daemon.SettlesAt(descriptors)) << daemon.Descriptors();
    const int before = PrivateDirtyKiB(daemon.Pid());

    const int answered = m_answered, exchanges = script.exchanges;
    script.pauseEvery = requests / 2 / losses;
    Storm(script, requests);
    EXPECT_EQ(script.pauses, 2 * losses);
    EXPECT_TRUE(daemon.SettlesAt(descriptors)) << daemon.Descriptors();
    const int growth = PrivateDirtyKiB(daemon.Pid()) - before;
    printf("%d requests, %d exchanges; slowest file %.3f s, in a pause of the recorder %.3f s; "
           "%d KiB before, grown by %d%s\n",
           m_answered - answered, script.exchanges - exchanges, m_slowestFile, m_slowestFileInPause,
           before, growth, kSanitized ? " (not judged: built with a sanitizer)" : "");
    EXPECT_GE(m_answered - answered, requests);
    EXPECT_TRUE(kSanitized || growth <= kMostGrowthKiB) << growth << " KiB";
}

} // namespace
