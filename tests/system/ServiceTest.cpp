// SPDX-License-Identifier: GPL-2.0-only
// The daemon's life: start-up, its folder, restarts, and recorders that do not answer well.

#include <atomic>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

#include "tests/support/Capture.h"
#include "tests/support/HttpClient.h"
#include "tests/support/Recorder.h"
#include "tests/support/Sandbox.h"
#include "tests/system/Daemon.h"

namespace {

constexpr char kChinese[] = "<stDisplay strLanguage=\"CN\"/>";
constexpr char kEnglish[] = "{ \"strLanguage\": \"EN\", \"result\": 0 }";

// What crypt(3) makes of "pass", and what a client sends of it.
#define LOGIN "a:$2b$04$abcdefghijklmnopqrstuufznL8bkzdtHwLhca4To/v9Lo9bA7fR6\n"
constexpr char kLogin[] = "Authorization: Basic YTpwYXNz\r\n";

class Service : public SystemTest {
protected:
    void WriteLogin(const std::string& name, const std::string& text) {
        WriteFile(name, text);
        chmod((Folder() + "/web_root/" + name).c_str(), 0640);
    }
};

// What a shell command prints on standard output.
std::string Printed(const std::string& command) {
    return Capture([&] { EXPECT_NE(system(command.c_str()), -1); }).out;
}

TEST_F(Service, TakesAnExecutablePathOf127BytesAndNoLonger) {
    // A folder so deep that the path of the executable, FOLDER/webctrl, has the length asked for.
    const auto folderFor = [&](size_t pathBytes) {
        const std::string folder =
            Folder() + "/" + std::string(pathBytes - Folder().size() - sizeof("/webctrl"), 'd');
        std::filesystem::create_directory(folder);
        return folder;
    };
    // One byte more than the path has is cut from "web_root", so that there is no such folder.
    Daemon longest(folderFor(127));
    longest.WaitFor("/web_roo\n");
    longest.WaitFor("Cannot find web_root directory, exiting\n");
    Daemon tooLong(folderFor(128));
    EXPECT_EQ(tooLong.Wait(), 255);
    EXPECT_EQ(tooLong.Output(), "CWebCtrl::Init, ip:127.0.0.1, port:6000.\n***Error***\n");
}

TEST_F(Service, ReadsTheLoginFileAgainOnHangup) {
    const struct {
        const char* text;
        const char* line;
        const char* status;
    } cases[] = {
        {LOGIN, "login file read again.\n", "HTTP/1.1 200"},
        {"a:b", "login: line 1: no yescrypt, SHA-512 or bcrypt hash behind the name.\n",
         "HTTP/1.1 200"},
        {"b" LOGIN, "login file read again.\n", "HTTP/1.1 401"},
    };
    WriteLogin("login", "b" LOGIN);
    Daemon& daemon = Start({"--login", Folder() + "/web_root/login"});
    for (const auto& each : cases) {
        WriteLogin("login", each.text);
        const size_t printed = daemon.Output().size();
        kill(daemon.Pid(), SIGHUP);
        daemon.WaitFor(each.line, 1, printed);
        HttpClient client;
        client.Send(Request("/get_cpu_usage", "", kLogin));
        EXPECT_EQ(client.Read().head.substr(0, 12), each.status) << each.text;
    }
}

#ifdef TLS_PEM
TEST_F(Service, SpeaksTlsAlone) {
    const struct {
        const char* request;
        const char* answer;
    } cases[] = {
        {"https://127.0.0.1/page.txt", "page"},
        {"--tls-max 1.2 https://127.0.0.1/page.txt", "page"},
        {"--tls-max 1.1 --ciphers ALL:@SECLEVEL=0 https://127.0.0.1/page.txt", ""},
        {"http://127.0.0.1:443/page.txt", ""},
        {"-I https://127.0.0.1/page.txt -o /dev/null -w %{http_code}", "200"},
        {"https://127.0.0.1/page.txt https://127.0.0.1/none", "pageNot found\n"},
    };
    WriteFile("page.txt", "page");
    Daemon& daemon = Start({"--tls-cert", TLS_PEM, "--tls-key", TLS_PEM});
    const int descriptors = daemon.Descriptors();
    {
        HttpClient silent(443), broken(443), endless(443);
        broken.Send("GET /page.txt HTTP/1.1\r\n\r\n");
        endless.Send("\x16\x03\x01\x40"); // the head of a record
        for (const auto& each : cases)
            EXPECT_EQ(Printed(std::string("curl -s -m 20 --cacert " TLS_PEM " ") + each.request),
                      each.answer)
                << each.request;
        EXPECT_TRUE(daemon.SettlesAt(descriptors + 2));
    }
    EXPECT_TRUE(daemon.SettlesAt(descriptors));
}
#endif

TEST_F(Service, IdlesWithoutAPortOrAWebRoot) {
    Daemon& first = Start();
    Daemon second(Folder());
    second.WaitFor("Cannot bind to 80\n");
    Daemon third(Folder(), {"--port", "8080", "--web-root", Folder() + "/none"});
    third.WaitFor("Cannot find web_root directory, exiting\n");
    HttpClient client;
    client.Send(Request("/get_cpu_usage"));
    EXPECT_NE(client.Read().body, "");
    EXPECT_EQ(Count(first.Output(), "Cannot"), 0);
}

TEST_F(Service, GoesOnAfterAcceptedWrites) {
    Daemon& daemon = Start();
    Recorder recorder;
    const int descriptors = daemon.Descriptors();
    for (int i = 1; i <= 3; ++i) {
        const Answer answer = Exchange(recorder, "/set_LangInfo", "strLanguage=EN", {SetReply(0)});
        EXPECT_EQ(answer.body, "{\"result\": 1 }");
        EXPECT_GE(answer.seconds, 1.9);
        daemon.WaitFor("Cannot bind to 80\n", i);
        EXPECT_TRUE(daemon.SettlesAt(descriptors)) << daemon.Descriptors();
    }
}

TEST_F(Service, AnswersForARecorderThatDoesNot) {
    Daemon& daemon = Start();
    HttpClient client;
    client.Send(Request("/get_LangInfo"));
    const Answer dead = client.Read();
    EXPECT_EQ(dead.body, kEnglish);
    EXPECT_GE(dead.seconds, 4.9);

    // An answer from a foreign port ends the wait, and spoils nothing; nor does what comes unasked.
    Recorder recorder, stranger(6001);
    client.Send(Request("/get_LangInfo"));
    recorder.Receive();
    stranger.Reply(QueryReply(kChinese));
    const Answer foreign = client.Read();
    EXPECT_EQ(foreign.body, kEnglish);
    EXPECT_LT(foreign.seconds, dead.seconds / 2);
    daemon.WaitFor("peer net info not match[127.0.0.1  VS 127.0.0.1], port[6000 VS 6001]");
    recorder.Reply(QueryReply("<stDisplay strLanguage=\"US\"/>"));
    EXPECT_EQ(Exchange(recorder, "/get_LangInfo", "", {QueryReply(kChinese)}).body,
              "{ \"strLanguage\": \"CN\", \"result\": 1 }");
}

TEST_F(Service, TellsTheTimeOfTheZoneFile) {
    Start();
    Recorder recorder;
    for (const char hours : {0, 5}) {
        std::string zone = "TZif" + std::string(50, '\0'); // tzfile(5): one type of time, "ABC"
        zone[39] = 1, zone[43] = 4;
        const int offset = hours * 3600;
        zone[46] = static_cast<char>(offset >> 8), zone[47] = static_cast<char>(offset);
        ReplaceFile("/etc/localtime", zone.replace(50, 3, "ABC"));
        const std::string body = Exchange(recorder, "/get_BaseInfo", "", {"no XML"}).body;
        tm told{};
        EXPECT_NE(strptime(body.c_str() + body.find("20"), "%F %T", &told), nullptr) << body;
        EXPECT_NEAR(static_cast<double>(timegm(&told) - offset), static_cast<double>(time(nullptr)),
                    20);
    }
}

TEST_F(Service, AFloodedControlPortDelaysNoExchangeForEver) {
    Start();
    std::atomic<bool> stop{false};
    std::thread flood([&] {
        Recorder peer(6002);
        while (!stop)
            peer.Reply("x");
    });
    HttpClient client;
    client.Send(Request("/get_LangInfo"));
    EXPECT_EQ(client.Read().body, kEnglish);
    stop = true;
    flood.join();
}

} // namespace
