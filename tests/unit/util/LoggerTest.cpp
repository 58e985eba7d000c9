// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Logger.h"

#include "tests/unit/Unit.h"

namespace fs = std::filesystem;

struct Logging : testing::Test {
    Logging() {
        std::string pattern = testing::TempDir() + "loggerXXXXXX";
        fs::current_path(mkdtemp(pattern.data()));
    }
    ~Logging() override {
        EXPECT_EQ(0, m_stLogger.close() + m_stLogger.close()); // the second does nothing
        fs::remove_all(fs::current_path());
    }
    static std::string Run(const char* command) {
        return Capture([command] { EXPECT_EQ(0, system(command)); }).out;
    }

    Logger m_stLogger;
};

TEST_F(Logging, FailuresAreRedConsoleLines) {
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

TEST_F(Logging, PrunesTheOldestOfItsOwnFiles) {
    fs::create_directory("a'b");
    std::string kept = "abc_20000101_000000\nweb_1.txt\n", printed;
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
    EXPECT_EQ("0 " + printed, Told([this] { return m_stLogger.init("a'b", "web"); }));
    const std::string left = Run("LC_ALL=C ls -A \"a'b\"");
    EXPECT_EQ(kept + Run("printf $(date +web_%Y)"), left.substr(0, kept.size() + 8));
    EXPECT_EQ(kept.size() + sizeof("web_20200101_000010"), left.size()) << "one new file";
    EXPECT_EQ("a'b\n", Run("ls -A")) << "a file name ran as a command";
}

TEST_F(Logging, LinesAreCutNumberedAndRewound) {
    ASSERT_EQ(0, m_stLogger.init("old", "web"));
    m_stLogger.log("old\n");
    ASSERT_EQ(0, m_stLogger.init("", "web"));
    m_stLogger.log("%s", std::string(2000, 'x').c_str());
    std::string first = Run("cat log/*");
    EXPECT_EQ(1023U, first.size());
    std::replace_if(first.begin(), first.end(), isdigit, '0');
    EXPECT_EQ("<L0> [0000-00-00 00:00:00]:x", first.substr(0, 28));
    const auto write = [this](int count) {
        while (count-- > 0)
            m_stLogger.log("a\n");
    };
    std::thread other(write, 60000);
    write(59999);
    other.join();
    const std::string written = Run("cat log/*");
    std::istringstream lines(written.substr(1023));
    int good = 0;
    for (std::string line; std::getline(lines, line);)
        good += line.rfind("<L" + std::to_string(good + 1) + "> [", 0) == 0 &&
                line.substr(line.find(']')) == "]:a";
    EXPECT_EQ(119999, good) << "lines of different threads got mixed";
    m_stLogger.log("again\n");
    EXPECT_TRUE(Run("cat log/*").substr(30) == "]:again\n" + written.substr(38)) << "rewound";
}
