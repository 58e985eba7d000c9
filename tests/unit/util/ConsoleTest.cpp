// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Console.h"

#include "tests/unit/Unit.h"

// What waits in a pipe.
static std::string Drain(int fd) {
    std::string text(1 << 20, '\0');
    const ssize_t size = read(fd, text.data(), text.size());
    return text.substr(0, size > 0 ? static_cast<size_t>(size) : 0);
}

// Both outputs go to one pipe. Returns 0, or the step that failed.
static int PrintUnread(bool own) {
    int ends[2];
    alarm(100); // instead of waiting for ever
    if (pipe(ends) != 0 || dup2(ends[1], 1) < 0 || dup2(ends[1], 2) < 0 || close(ends[1]) != 0)
        return 1;
    if (own && (OpenConsole(), dup(STDIN_FILENO)) != ends[1]) // else another one is left open
        return 4;
    const std::string line = std::string(999, 'x') + "\n", lost = " lines could not be printed\n";
    for (int i = 0; i < 100; ++i)
        ConsoleWrite(line);
    const auto kept = Drain(ends[0]).size() / line.size();
    {
        const ConsoleBatch batch;
        ConsoleWrite("a\n");
        ConsoleWrite("b\n");
    }
    if (Drain(ends[0]) != "webctrl: " + std::to_string(100 - kept) + lost + "a\nb\n")
        return 2;
    if (own) {
        ConsoleWriteError(std::string(100000, 'y') + "\nz\n"); // more than a pipe takes
        Drain(ends[0]);
        ConsoleWriteError("c\n");
        if (Drain(ends[0]) != "\nwebctrl: 2" + lost + "c\n")
            return 3;
        close(ends[0]);
        ConsoleWrite(line);
    }
    return 0;
}

TEST(Console, LosesLinesThatNobodyReads) {
    for (const bool own : {false, true})
        EXPECT_EQ(0, RunInChild([own] { return PrintUnread(own); })) << own;
}

TEST(Console, OpensWhatIsClosed) {
    const auto reopen = [] {
        const int next = dup(STDIN_FILENO);
        for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO, next})
            close(fd);
        OpenConsole();
        return dup(STDIN_FILENO) == next ? 0 : 1; // else one is closed, or more are open
    };
    EXPECT_EQ(0, RunInChild(reopen));
}

TEST(Console, ABatchIsWrittenInBlocksAndAtItsEnd) {
    const auto print = [] {
        const ConsoleBatch batch;
        ConsoleWrite(std::string(1000, 'x'));
        ConsoleWrite(std::string(4000, 'x'));
        EXPECT_EQ(1, write(STDOUT_FILENO, "|", 1));
    };
    EXPECT_EQ(std::string(4096, 'x') + "|" + std::string(904, 'x'), Capture(print).out);
}
