// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Console.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string_view>
#include <thread>
#include <unistd.h>

#include "CBB/Util/DebugPrint.h"
#include "CBB/Util/HexDump.h"
#include "CBB/Util/Logger.h"
#include "CBB/Util/Printable.h"
#include "tests/support/Capture.h"

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
        };
        const char* text = "\033[32m\033[1mx=7\033[0m<HEX:d>(2)-[01 ff ]\n";
        EXPECT_EQ(shown ? text : "", Capture(print).out);
    }
}

TEST(DebugPrint, IsCutAndCanBeSilenced) {
    const auto print = [] { DebugPrint(9, "%s", std::string(5000, 'x').c_str()); };
    EXPECT_EQ(std::string(1023, 'x'), Capture(print).out);
    DebugSetLevel(4);
    DebugSetLevel(5);
    DebugLessVerbose();
    EXPECT_EQ("Debug[5]-enable=1\n", Capture(DebugLessVerbose).out);
    EXPECT_EQ("", Capture(print).out);
    DebugSetEnable(0);
    EXPECT_EQ("Debug[4]-enable=0\n", Capture(DebugMoreVerbose).out);
    EXPECT_EQ("", Capture(print).out);
    DebugSetEnable(1);
    EXPECT_EQ("Debug[0]-enable=1\n", Capture(DebugMoreVerbose).out);
}

TEST(Console, LosesLinesThatNobodyReads) {
    const auto read = [](int fd) {
        std::string text(1 << 20, '\0');
        const ssize_t size = ::read(fd, text.data(), text.size());
        return text.substr(0, size < 0 ? 0 : static_cast<size_t>(size));
    };
    for (const bool own : {false, true}) {
        EXPECT_EQ(0, RunInChild([&] {
                      alarm(10);
                      int ends[2];
                      if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0 ||
                          close(ends[1]) != 0)
                          return 1;
                      if (own)
                          OpenConsole();
                      const std::string line = std::string(999, 'x') + "\n";
                      for (int i = 0; i < 100; ++i)
                          ConsoleWrite(line);
                      const auto kept = read(ends[0]).size() / line.size();
                      {
                          const ConsoleBatch batch;
                          ConsoleWrite("a\n");
                          ConsoleWrite("b\n");
                      }
                      if (read(ends[0]) != "webctrl: " + std::to_string(100 - kept) +
                                               " lines could not be printed\na\nb\n")
                          return 2;
                      close(ends[0]);
                      if (own)
                          ConsoleWrite(line);
                      return 0;
                  }))
            << own;
    }
}

TEST(Printable, ShowsNoControlCharactersAndNoSecrets) {
    using namespace std::literals;
    const struct {
        std::string_view text;
        const char* shown;
        const char* masked;
    } cases[] = {
        {"a\nb\r\t\x1b[31m\0\x7f\\"sv, "a\\x0ab\\x0d\\x09\\x1b[31m\\x00\\x7f\\", nullptr},
        {"\xe4\xbd\xa0 \xc3\x9f \x9b \xc2\x9b", "\xe4\xbd\xa0 \xc3\x9f \\x9b \\xc2\\x9b", nullptr},
        {"<a b=\"1\" strFD_Passwd=\"x'y\" c='2'/>", nullptr,
         "<a b=\"1\" strFD_Passwd=\"***\" c='2'/>"},
        {"strFD_UserPasswd = 'x\"=y' z", nullptr, "strFD_UserPasswd = '***' z"},
        {"<a WPAKEY=x/&=y>", nullptr, "<a WPAKEY=***>"},
        {"strFD_DevicePass=\"cut off", nullptr, "strFD_DevicePass=\"***"},
        {"id='=' strFD_Passwd=\"\"", nullptr, "id='=' strFD_Passwd=\"***\""},
        {"id='a strFD_Passwd=\"' strFD_Passwd=\"x\"", nullptr, "id='***' strFD_Passwd=\"***\""},
        {"id=\"q\" z='\" strFD_Passwd=\"x\"", nullptr, "id=\"q\" z='***"},
        {"monkey pass", nullptr, nullptr},
        {"=", nullptr, nullptr},
    };
    for (const auto& each : cases) {
        const std::string shown = each.shown ? each.shown : std::string(each.text);
        EXPECT_EQ(shown, Printable(each.text));
        MaskSecrets(true);
        EXPECT_EQ(each.masked ? each.masked : shown, Printable(each.text));
        MaskSecrets(false);
    }
}

class LoggerTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "loggerXXXXXX";
        fs::current_path(mkdtemp(pattern.data()));
    }
    void TearDown() override {
        m_stLogger.close();
        fs::remove_all(fs::current_path());
    }
    static std::string Run(const char* command) {
        return Capture([command] { EXPECT_EQ(0, system(command)); }).out;
    }

    Logger m_stLogger;
};

TEST_F(LoggerTest, FailuresAreRedConsoleLines) {
    const std::string red = "\033[31m\033[1m[Logger          ]<ERROR@";
    const std::string failed = "\n\033[0m" + red + "init, L106>:clear log failed.\n\033[0m";
    const auto init = [this](const char* dir, const char* prefix) {
        return Capture([&] { EXPECT_EQ(-1, m_stLogger.init(dir, prefix)); }).out;
    };
    EXPECT_EQ(red + "clearLog, L188>:reopen dir:[a/b/] error:No such file or directory." + failed,
              init("a/b", "web"));
    EXPECT_EQ(red + "clearLog, L194>:open dir:[/dev/null/] error:Not a directory." + failed,
              init("/dev/null", "web"));
    EXPECT_EQ(0U, init("", "a/b").find(red + "init, L114>:Can't open log file:./log//a/b_20"));
    EXPECT_EQ(red + "log, L138>:CLogger not init.\n\033[0m",
              Capture([this] { m_stLogger.log("lost\n"); }).out);
}

TEST_F(LoggerTest, PrunesTheOldestOfItsOwnFiles) {
    fs::create_directory("a'b");
    std::string kept = "abc_20000101_000000\nweb_1.txt\n";
    std::string printed;
    std::ofstream("a'b/abc_20000101_000000") << "another prefix";
    std::ofstream("a'b/web_1.txt") << "another length";
    for (int i = 9; i < 44; ++i) {
        const std::string name =
            i == 9 ? "web';touch pwned;'#" : "web_20200101_0000" + std::to_string(i);
        std::ofstream("a'b/" + name) << "old";
        if (i < 14)
            printed += "\033[32m\033[1mLogger::clearLog, [rm -rf a'b/" + name + "]\n\033[0m";
        else
            kept += name + "\n";
    }
    EXPECT_EQ(printed, Capture([this] { EXPECT_EQ(0, m_stLogger.init("a'b", "web")); }).out);
    const std::string left = Run("LC_ALL=C ls -A \"a'b\"");
    EXPECT_EQ(kept + "web_20", left.substr(0, kept.size() + 6));
    EXPECT_EQ(kept.size() + sizeof("web_20200101_000010"), left.size()) << "one new file";
    EXPECT_EQ("a'b\n", Run("ls -A")) << "a file name ran as a command";
}

TEST_F(LoggerTest, LinesAreCutNumberedAndRewound) {
    ASSERT_EQ(0, m_stLogger.init("", "web"));
    m_stLogger.log("%s", std::string(2000, 'x').c_str());
    std::string first = Run("cat log/*");
    EXPECT_EQ(1023U, first.size());
    std::replace_if(first.begin(), first.end(), isdigit, '0');
    EXPECT_EQ("<L0> [0000-00-00 00:00:00]:x", first.substr(0, 28));
    std::thread other([this] {
        for (int i = 0; i < 60000; ++i)
            m_stLogger.log("a\n");
    });
    for (int i = 0; i < 59999; ++i)
        m_stLogger.log("a\n");
    other.join();
    std::istringstream lines(Run("cat log/*").substr(1023));
    int good = 0;
    for (std::string line; std::getline(lines, line);)
        good += line.rfind("<L" + std::to_string(good + 1) + "> [", 0) == 0 &&
                line.substr(line.find(']')) == "]:a";
    EXPECT_EQ(119999, good) << "lines of different threads got mixed";
    const size_t size = Run("cat log/*").size();
    m_stLogger.log("again\n");
    EXPECT_EQ(size, Run("cat log/*").size());
    EXPECT_EQ("]:again\nx", Run("cat log/*").substr(30, 9));
}

} // namespace
