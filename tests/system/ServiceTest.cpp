// SPDX-License-Identifier: GPL-2.0-only
// The daemon's life: start-up, its folder, restarts, and recorders that do not answer well.

#include <atomic>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

#include "tests/system/Daemon.h"
#include "tests/system/HttpClient.h"
#include "tests/system/Recorder.h"

namespace {

constexpr char kEnglish[] = "{ \"strLanguage\": \"EN\", \"result\": 0 }";

class Service : public SystemTest {};

TEST_F(Service, TellsWhatItDoesWhileStarting) {
    Daemon& daemon = Start();
    const std::string output = daemon.Output();
    size_t at = 0;
    for (const std::string& line : {
             std::string("CWebCtrl::Init, ip:127.0.0.1, port:6000.\n"),
             "web server current absolute path:" + Folder() + "/web_root\n",
             std::string("\033[31m\033[1m[Logger          ]<ERROR@log, L138>:CLogger not init.\n"),
             std::string("\033[35m\033[1m[LOG  ]<@DetectSvc, L417>:CWebCtrl::DetectSvc, tid="),
             std::string("Starting web server on port 80\n"),
         }) {
        at = output.find(line, at);
        ASSERT_NE(at, std::string::npos) << line;
    }
}

TEST_F(Service, TakesAnExecutablePathOf127BytesAndNoLonger) {
    // A folder so deep that the path of the executable, FOLDER/webctrl, has the length asked for.
    const auto folderFor = [&](size_t pathBytes) {
        const std::string parent = Folder() + "/";
        const std::string folder =
            parent + std::string(pathBytes - parent.size() - sizeof("/webctrl") + 1, 'd');
        std::filesystem::create_directory(folder);
        EXPECT_EQ((folder + "/webctrl").size(), pathBytes);
        return folder;
    };
    Daemon longest(folderFor(127));
    // One byte more than the path has is cut from "web_root", so that there is no such folder.
    longest.WaitFor("Cannot find web_root directory, exiting\n");
    EXPECT_NE(longest.Output().find("/web_roo\n"), std::string::npos);

    Daemon tooLong(folderFor(128));
    EXPECT_EQ(tooLong.Wait(), 255);
    EXPECT_EQ(tooLong.Output(), "CWebCtrl::Init, ip:127.0.0.1, port:6000.\n***Error***\n");
}

TEST_F(Service, RefusesABadCommandLineInOneLine) {
    const struct {
        std::vector<std::string> options;
        const char* line;
    } cases[] = {
        {{"--port", "0"}, "webctrl: --port takes a number from 1 to 65535, not '0'; try --help\n"},
        {{"--port=65536"},
         "webctrl: --port takes a number from 1 to 65535, not '65536'; try --help\n"},
        {{"--port"}, "webctrl: --port needs a value; try --help\n"},
        {{"--recorder", "host:6000"},
         "webctrl: --recorder takes IP:PORT, such as 127.0.0.1:6000, not 'host:6000'; try "
         "--help\n"},
        {{"--recorder", "127.0.0.1"},
         "webctrl: --recorder takes IP:PORT, such as 127.0.0.1:6000, not '127.0.0.1'; try "
         "--help\n"},
        {{"--web-root", std::string(128, 'x')},
         "webctrl: --web-root takes a path of 1 to 127 bytes; try --help\n"},
        {{"--web-root", "a,b"},
         "webctrl: --web-root cannot take a path with ',' or '=': 'a,b'; try --help\n"},
        {{"--allow-host", "a b"},
         "webctrl: --allow-host takes a domain name, not 'a b'; try --help\n"},
        {{"--frob"}, "webctrl: unknown option '--frob'; try --help\n"},
        {{"frob"}, "webctrl: unexpected 'frob'; try --help\n"},
    };
    for (const auto& each : cases) {
        Daemon daemon(Folder(), each.options);
        EXPECT_EQ(daemon.Wait(), 2);
        EXPECT_EQ(daemon.Output(), each.line);
    }
    for (const char* asked : {"--help", "--version"}) {
        Daemon daemon(Folder(), {asked});
        EXPECT_EQ(daemon.Wait(), 0);
        EXPECT_NE(daemon.Output().find("webctrl"), std::string::npos);
    }
}

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

TEST_F(Service, GoesOnAfterTenAcceptedWrites) {
    Daemon& daemon = Start();
    Recorder recorder;
    const int descriptors = daemon.Descriptors();
    for (int i = 1; i <= 10; ++i) {
        std::vector<std::string> datagrams;
        const Answer answer =
            Exchange(recorder, "/set_LangInfo", "strLanguage=EN", {SetReply(0)}, &datagrams);
        EXPECT_EQ(answer.chunks, std::vector<std::string>{"{\"result\": 1 }"});
        EXPECT_GE(answer.seconds, 1.9);
        EXPECT_LT(answer.seconds, 3);
        EXPECT_EQ(datagrams[0], "<VariCfgSec Action=\"DEVICE_SET\">"
                                "<stDisplay strLanguage=\"US\" /></VariCfgSec>");
        daemon.WaitFor("Cannot bind to 80\n", i);
        EXPECT_TRUE(daemon.SettlesAt(descriptors)) << daemon.Descriptors();
    }
}

TEST_F(Service, AnswersForARecorderThatDoesNot) {
    Daemon& daemon = Start();
    const auto tries = [&](const char* what, const std::function<void()>& reply, double least,
                           double most) {
        HttpClient client;
        client.Send(Request("/get_LangInfo"));
        reply();
        const Answer answer = client.Read();
        EXPECT_EQ(answer.body, kEnglish) << what;
        EXPECT_GE(answer.seconds, least) << what;
        EXPECT_LT(answer.seconds, most) << what;
    };
    tries(
        "a dead port", [] {}, 4.9, 6);

    Recorder recorder;
    Recorder stranger(6001);
    std::string deep;
    for (int i = 0; i < 17; ++i)
        deep += "<VariCfgSec Action=\"DEVICE_QUERY\">";
    std::string noise(1024, '\0');
    for (size_t i = 0; i < noise.size(); ++i)
        noise[i] = static_cast<char>(i * 73 + 11);
    const std::string replies[] = {
        "",
        "<",
        "<VariCfgSec",
        QueryReply(""),
        "<Other Action=\"DEVICE_QUERY\"><stDisplay/></Other>",
        "<VariCfgSec Result=\"0\" Action=\"DEVICE_QUERY\"><stDisplay "
        "strLanguage=\"CN\"/></VariCfgSec>",
        "<VariCfgSec><stDisplay strLanguage=\"CN\"/></VariCfgSec>",
        deep,
        noise,
        // All the bytes that fit are markup: the parser would recurse for each.
        [] {
            std::string text;
            while (text.size() < 1020)
                text += "<a>";
            return text;
        }(),
        // Longer than a reply can be: cut, and no XML any more.
        std::string(1030, ' ') + QueryReply("<stDisplay strLanguage=\"CN\"/>"),
    };
    for (const std::string& reply : replies) {
        tries(
            reply.substr(0, 40).c_str(),
            [&] {
                recorder.Receive();
                recorder.Reply(reply);
            },
            0, 2);
    }
    tries(
        "a foreign port",
        [&] {
            recorder.Receive();
            stranger.Reply(QueryReply("<stDisplay strLanguage=\"CN\"/>"));
        },
        0, 2);
    EXPECT_EQ(Count(daemon.Output(), "peer net info not match[127.0.0.1  VS 127.0.0.1], port[6000 "
                                     "VS 6001]"),
              1);
    // None of them spoils the next exchange, nor does what came unasked before it.
    recorder.Reply(QueryReply("<stDisplay strLanguage=\"US\"/>"));
    EXPECT_EQ(
        Exchange(recorder, "/get_LangInfo", "", {QueryReply("<stDisplay strLanguage=\"CN\"/>")})
            .body,
        "{ \"strLanguage\": \"CN\", \"result\": 1 }");
}

TEST_F(Service, TakesAReplyOf1024Bytes) {
    Start();
    Recorder recorder;
    std::string reply = QueryReply("<stDisplay strLanguage=\"CN\"/>");
    reply.append(1024 - reply.size(), '\n');
    EXPECT_EQ(Exchange(recorder, "/get_LangInfo", "", {reply}).body,
              "{ \"strLanguage\": \"CN\", \"result\": 1 }");
}

TEST_F(Service, SendsToTheInterfaceBroadcastAddress) {
    Daemon& daemon = Start({"--recorder", "255.255.255.255:6000"});
    HttpClient client;
    client.Send(Request("/get_LangInfo"));
    daemon.WaitFor("get IfBrdAddr ok, brdaddr:0xff32a8c0.");
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

TEST_F(Service, RendersIncludePages) {
    WriteFile("part.html", "<b>&</b>");
    WriteFile("inner.shtml", "(<!--#call setting2 -->)");
    WriteFile("loop.shtm", "x<!--#include file=\"loop.shtm\" -->");
    WriteFile("sub/index.shtml", "<!--#call setting2 -->");
    WriteFile("sub/index.html.gz", "compressed");
    WriteFile("../index.html", "outside");
    WriteFile("index.shtml",
              "<!--#call setting1 -->|<!--#call nothing -->|<!--#include file=\"part.html\" -->|"
              "<!--#include file=\"inner.shtml\" -->|<!--#include file=\"../log\" -->|"
              "<!--#include file=\"/etc/passwd\" -->|<!--#exec cmd=\"id\" -->|<!-- kept -->");
    Start();
    const struct {
        const char* path;
        const char* body;
    } cases[] = {
        {"/", "value1||<b>&</b>|(value2)||||<!-- kept -->"},
        {"/index.shtml", "value1||<b>&</b>|(value2)||||<!-- kept -->"},
        {"/loop.shtm", "xxxxxx"},
        {"/part.html", "<b>&</b>"},
        {"/none.shtml", "Not found\n"},
        {"/sub/", "value2"},
        {"/sub%2F", ""}, // redirected, since links in the page would lead elsewhere
        {"/%2e%2e/log.shtml", "Invalid path"},
        {"/%2e%2e/", "Invalid path"},
    };
    for (const auto& each : cases) {
        HttpClient client;
        client.Send(Request(each.path));
        EXPECT_EQ(client.Read().body, each.body) << each.path;
    }
}

} // namespace
