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

namespace {

namespace fs = std::filesystem;

TEST(DebugPrint, ShowsFromTheMinimumLevel) {
    EXPECT_EQ(1, DebugGetLevel());
    const int cases[][3] = {{1, 0, 0}, {1, 1, 1}, {3, 1, 0}, {3, 3, 1}, {3, 4, 1}, {0, -1, 0}};
    for (const auto& [minimum, level, shown] : cases) {
        DebugSetLevel(minimum);
        const auto print = [printed = level] {
            DebugPrint(printed, DEBUG_INFO_FORMAT("x=%d"), 7);
            HexDump(printed, "d", "\x01\xff", 2);
            HexDump(printed, "d", "", 0);
            HexDump(printed, nullptr, "x", 1);
        };
        EXPECT_EQ(shown ? "\033[32m\033[1mx=7\033[0m<HEX:d>(2)-[01 ff ]\n" : "",
                  Capture(print).out);
    }
    const auto tooLong = [] { DebugPrint(1, "%s", std::string(5000, 'x').c_str()); };
    EXPECT_EQ(std::string(1023, 'x'), Capture(tooLong).out);
}

TEST(DebugPrint, SettingsAndTheirReport) {
    DebugSetLevel(5);
    DebugSetLevel(-1);
    for (const char* line : {"Debug[0]-enable=1\n", "Debug[0]-enable=1\n"}) {
        EXPECT_EQ(line, Capture(DebugMoreVerbose).out);
    }
    DebugSetLevel(4);
    for (const char* line : {"Debug[5]-enable=1\n", "Debug[5]-enable=1\n"}) {
        EXPECT_EQ(line, Capture(DebugLessVerbose).out);
    }
    EXPECT_EQ("", Capture([] { DebugPrint(9, "silent"); }).out);
    DebugSetEnable(0);
    EXPECT_EQ("Debug[4]-enable=0\n", Capture(DebugMoreVerbose).out);
    EXPECT_EQ("", Capture([] { DebugPrint(9, "silent"); }).out);
    DebugSetEnable(1);
    EXPECT_EQ(0, DebugGetLevel());
}

class LoggerTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "loggerXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern.data()));
        fs::current_path(pattern);
    }
    void TearDown() override {
        m_stLogger.close();
        fs::remove_all(fs::current_path());
    }
    static std::set<std::string> Names(const std::string& dir) {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(dir)) {
            names.insert(entry.path().filename());
        }
        return names;
    }
    static std::string Content(const std::string& dir) {
        std::ifstream file(dir + "/" + *Names(dir).begin());
        return {std::istreambuf_iterator<char>(file), {}};
    }

    Logger m_stLogger;
};

TEST_F(LoggerTest, FailuresAreRedConsoleLines) {
    const std::string red = "\033[31m\033[1m[Logger          ]<ERROR@";
    const std::string failed = "\n\033[0m" + red + "init, L106>:clear log failed.\n\033[0m";
    const struct {
        std::string dir, prefix, text;
    } cases[] = {
        {"a/b", "web",
         "clearLog, L188>:reopen dir:[a/b/] error:No such file or directory." + failed},
        {"/dev/null", "web",
         "clearLog, L194>:open dir:[/dev/null/] error:Not a directory." + failed},
        {"", "no/such", "init, L114>:Can't open log file:./log//no/such_"},
    };
    for (const auto& c : cases) {
        const std::string out =
            Capture([&] { EXPECT_EQ(-1, m_stLogger.init(c.dir, c.prefix)); }).out;
        EXPECT_EQ(red + c.text, out.substr(0, red.size() + c.text.size()));
        EXPECT_EQ(red + "log, L138>:CLogger not init.\n\033[0m",
                  Capture([this] { m_stLogger.log("lost\n"); }).out);
    }
}

TEST_F(LoggerTest, PrunesTheOldestOfItsOwnFiles) {
    // As long as a log file's name, and the first of all when sorted.
    const std::string hostile = "web';touch pwned;'#";
    fs::create_directory("a'b");
    std::set<std::string> kept = {"web_1.txt", "abc_20000101_000000"};
    std::set<std::string> removed = {hostile};
    for (int i = 0; i < 34; ++i) {
        (i < 4 ? removed : kept).insert("web_20200101_0000" + std::to_string(10 + i));
    }
    std::string printed;
    for (const std::string& name : kept) {
        std::ofstream("a'b/" + name) << "old";
    }
    for (const std::string& name : removed) {
        std::ofstream("a'b/" + name) << "old";
        printed += "\033[32m\033[1mLogger::clearLog, [rm -rf a'b/" + name + "]\n\033[0m";
    }
    EXPECT_EQ(printed, Capture([this] { EXPECT_EQ(0, m_stLogger.init("a'b", "web")); }).out);
    std::set<std::string> left = Names("a'b");
    for (const std::string& name : kept) {
        EXPECT_EQ(1U, left.erase(name)) << name;
    }
    ASSERT_EQ(1U, left.size());
    EXPECT_EQ("web_20", left.begin()->substr(0, 6));
    EXPECT_EQ(hostile.size(), left.begin()->size());
    EXPECT_EQ(std::set<std::string>{"a'b"}, Names(".")) << "a file name ran as a command";
}

TEST_F(LoggerTest, LinesAreCutNumberedAndRewound) {
    ASSERT_EQ(0, m_stLogger.init("", "first"));
    ASSERT_EQ(0, m_stLogger.init("", "web"));
    fs::remove("log/" + *Names("log").begin());
    m_stLogger.log("%s", std::string(2000, 'x').c_str());
    std::string first = Content("log");
    EXPECT_EQ(1023U, first.size());
    std::replace_if(first.begin(), first.end(), isdigit, '0');
    EXPECT_EQ("<L0> [0000-00-00 00:00:00]:x", first.substr(0, 28));
    const auto write = [this] {
        for (int i = 0; i < 39999; ++i) {
            m_stLogger.log("a\n");
        }
    };
    std::thread one(write), two(write);
    write();
    one.join();
    two.join();
    m_stLogger.log("a\n");
    m_stLogger.log("a\n");
    std::istringstream lines(Content("log").substr(1023));
    int good = 0;
    for (std::string line; std::getline(lines, line);) {
        good += line.rfind("<L" + std::to_string(good + 1) + "> [", 0) == 0 &&
                line.substr(line.find(']')) == "]:a";
    }
    EXPECT_EQ(119999, good) << "lines of different threads got mixed";
    const size_t size = Content("log").size();
    m_stLogger.log("again\n");
    EXPECT_EQ(size, Content("log").size());
    EXPECT_EQ("]:again\nx", Content("log").substr(30, 9));
}

} // namespace
