// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/DebugPrint.h"
#include "CBB/Util/HexDump.h"
#include "CBB/Util/Logger.h"
#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

TEST(DebugPrint, ShowsFromTheMinimumLevel) {
    const struct {
        int minimum;
        int level;
        bool shown;
    } cases[] = {{1, 0, false}, {1, 1, true}, {3, 1, false},
                 {3, 3, true},  {3, 4, true}, {0, -1, false}};
    for (const auto& c : cases) {
        DebugSetLevel(c.minimum);
        const char* expected = c.shown ? "\033[32m\033[1mx=7\033[0m<HEX:d>(2)-[01 ff ]\n" : "";
        EXPECT_EQ(expected, Capture([&c] {
                                DebugPrint(c.level, DEBUG_INFO_FORMAT("x=%d"), 7);
                                HexDump(c.level, "d", "\x01\xff", 2);
                                HexDump(c.level, "d", "", 0);
                                HexDump(c.level, nullptr, "x", 1);
                            }).out)
            << c.minimum << ' ' << c.level;
    }
}

TEST(DebugPrint, SettingsAndTheirReport) {
    EXPECT_EQ(1, DebugGetLevel());
    DebugSetLevel(5);
    DebugSetLevel(-1);
    EXPECT_EQ(1, DebugGetLevel());
    EXPECT_EQ("Debug[0]-enable=1\nDebug[0]-enable=1\n", Capture([] {
                                                            DebugMoreVerbose();
                                                            DebugMoreVerbose();
                                                        }).out);
    DebugSetLevel(4);
    EXPECT_EQ("Debug[5]-enable=1\nDebug[5]-enable=1\n", Capture([] {
                                                            DebugLessVerbose();
                                                            DebugLessVerbose();
                                                            DebugPrint(9, "silent");
                                                        }).out);
    DebugSetEnable(0);
    EXPECT_EQ("Debug[4]-enable=0\n", Capture([] {
                                         DebugMoreVerbose();
                                         DebugPrint(9, "silent");
                                     }).out);
    DebugSetEnable(1);
    EXPECT_EQ(0, DebugGetLevel());
    EXPECT_EQ(std::string(1023, 'x'),
              Capture([] { DebugPrint(1, "%s", std::string(5000, 'x').c_str()); }).out);
}

class LoggerTest : public testing::Test {
protected:
    void SetUp() override {
        m_strBack = fs::current_path();
        std::string pattern = testing::TempDir() + "loggerXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern.data()));
        fs::current_path(pattern);
    }
    void TearDown() override {
        m_stLogger.close();
        const fs::path dir = fs::current_path();
        fs::current_path(m_strBack);
        fs::remove_all(dir);
    }

    static std::set<std::string> Names(const std::string& dir) {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(dir)) {
            names.insert(entry.path().filename());
        }
        return names;
    }
    static std::string Content(const std::string& dir) {
        std::ifstream file(fs::directory_iterator(dir)->path());
        return {std::istreambuf_iterator<char>(file), {}};
    }

    Logger m_stLogger;
    fs::path m_strBack;
};

TEST_F(LoggerTest, FailuresAreRedConsoleLines) {
    const std::string red = "\033[31m\033[1m[Logger          ]<ERROR@";
    const std::string failed = red + "init, L106>:clear log failed.\n\033[0m";
    EXPECT_EQ(red + "log, L138>:CLogger not init.\n\033[0m",
              Capture([this] { m_stLogger.log("lost\n"); }).out);
    const struct {
        const char* dir;
        const char* prefix;
        std::string text;
    } cases[] = {
        {"a/b", "web",
         red + "clearLog, L188>:reopen dir:[a/b/] error:No such file or directory.\n\033[0m" +
             failed},
        {"/dev/null", "web",
         red + "clearLog, L194>:open dir:[/dev/null/] error:Not a directory.\n\033[0m" + failed},
        {"", "no/such", red + "init, L114>:Can't open log file:./log//no/such_"},
    };
    for (const auto& c : cases) {
        const Captured got = Capture([&] { EXPECT_EQ(-1, m_stLogger.init(c.dir, c.prefix)); });
        EXPECT_EQ(c.text, got.out.substr(0, c.text.size()));
        EXPECT_NE("", Capture([this] { m_stLogger.log("lost\n"); }).out);
    }
    EXPECT_EQ(0, m_stLogger.close());
}

TEST_F(LoggerTest, PrunesTheOldestOfItsOwnFiles) {
    // As long as a log file's name, and the first of all when sorted.
    const std::string hostile = "web';touch pwned;'#";
    ASSERT_EQ(std::string("web_20240305_070809").size(), hostile.size());
    fs::create_directory("a'b");
    std::set<std::string> kept = {"web_1.txt", "abc_20000101_000000"};
    std::set<std::string> removed = {hostile};
    for (int i = 0; i < 34; ++i) {
        (i < 4 ? removed : kept).insert("web_20200101_0000" + std::to_string(10 + i));
    }
    for (const auto& names : {kept, removed}) {
        for (const std::string& name : names) {
            std::ofstream("a'b/" + name) << "old";
        }
    }
    const std::string out = Capture([this] { EXPECT_EQ(0, m_stLogger.init("a'b", "web")); }).out;
    std::string printed;
    for (const std::string& name : removed) {
        printed += "\033[32m\033[1mLogger::clearLog, [rm -rf a'b/" + name + "]\n\033[0m";
    }
    EXPECT_EQ(printed, out);
    std::set<std::string> left = Names("a'b");
    EXPECT_EQ(kept.size() + 1, left.size());
    for (const std::string& name : kept) {
        EXPECT_EQ(1U, left.erase(name)) << name;
    }
    EXPECT_EQ("web_", left.begin()->substr(0, 4));
    EXPECT_EQ(hostile.size(), left.begin()->size());
    EXPECT_EQ(std::set<std::string>{"a'b"}, Names(".")) << "a file name ran as a command";
}

TEST_F(LoggerTest, LinesAreNumberedCutAndRewound) {
    ASSERT_EQ(0, m_stLogger.init("", "first"));
    ASSERT_EQ(0, m_stLogger.init("", "web"));
    fs::remove("log/" + *Names("log").begin());
    m_stLogger.log("%s", std::string(2000, 'x').c_str());
    EXPECT_EQ(1023U, Content("log").size());
    std::string header = Content("log").substr(0, 28);
    std::replace_if(header.begin(), header.end(), isdigit, '0');
    EXPECT_EQ("<L0> [0000-00-00 00:00:00]:x", header);
    for (int i = 1; i < 120000; ++i) {
        m_stLogger.log("\n");
    }
    const size_t size = Content("log").size();
    m_stLogger.log("again\n");
    EXPECT_EQ(size, Content("log").size());
    EXPECT_EQ("<L120000> [", Content("log").substr(0, 11));
    EXPECT_EQ("]:again\nx", Content("log").substr(30, 9));
}

TEST_F(LoggerTest, ThreadsDoNotMixTheirLines) {
    ASSERT_EQ(0, m_stLogger.init("log", "web"));
    std::vector<std::thread> threads(4);
    for (std::thread& thread : threads) {
        thread = std::thread([this] {
            for (int i = 0; i < 200; ++i) {
                m_stLogger.log("same text\n");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::istringstream lines(Content("log"));
    std::string line;
    int count = 0;
    for (; std::getline(lines, line); ++count) {
        EXPECT_EQ("<L" + std::to_string(count) + "> [", line.substr(0, line.find('[') + 1));
        EXPECT_EQ("]:same text", line.substr(line.find(']')));
    }
    EXPECT_EQ(800, count);
}

} // namespace
