// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/OtherFun.h"
#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <tuple>

namespace {

std::string g_calls;

TEST(SystemControl, CommandsAndCallsInTheirOrder) {
    const SystemCalls real = g_stSystemCalls;
    g_stSystemCalls = {
        [](const char* command) { return g_calls += command, g_calls += ';', 0; },
        [](int command) {
            char text[32];
            snprintf(text, sizeof(text), "reboot %#x;", static_cast<unsigned>(command));
            return g_calls += text, -1;
        },
        [](unsigned int s) { return g_calls += "sleep " + std::to_string(s) + ";", 0U; }};
    const std::tuple<void (*)(), const char*, const char*> cases[] = {
        {SystemReboot, "system reboot!\n", "reboot 0x1234567;busybox reboot;"},
        {SystemPoweroff, "ShutdownSystem!\n", "busybox poweroff;sleep 2;reboot 0x4321fedc;"},
        {RunSdShellScript, "", "/sd/ShellScript;rm -fr  /sd/ShellScript;"},
    };
    for (const auto& [operation, err, calls] : cases) {
        g_calls.clear();
        EXPECT_EQ(err, Capture(operation).err);
        EXPECT_EQ(calls, g_calls);
    }
    g_stSystemCalls = real;
}

void ReapAll(int) {
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
}

TEST(SystemControl, ARunCommandKeepsItsStatusFromTheHandler) {
    signal(SIGCHLD, ReapAll);
    EXPECT_EQ(3, WEXITSTATUS(RunCommand("exit 3")));
    EXPECT_EQ(ReapAll, signal(SIGCHLD, SIG_DFL));
}

TEST(SystemControl, ASpawnedProgramInheritsNeitherDescriptorsNorVariables) {
    const std::string script = testing::TempDir() + "spawned" + std::to_string(getpid());
    ReplaceContentFile(script.c_str(),
                       "#!/bin/sh\n"
                       "for n in 3 50 199 200; do [ -e /proc/$$/fd/$n ] && echo $n; done\n"
                       "tr '\\0' '\\n' < /proc/$$/environ\n");
    chmod(script.c_str(), 0700);
    for (const int fd : {3, 50, 199, 200}) {
        dup2(STDERR_FILENO, fd);
    }
    const std::string parent = "--------------------------parent process------------------\n";
    const std::string child = "--------------------------child process------------------\n";
    const std::string environment = "PATH=/sbin/:/bin/:/lib/:/usr/sbin:/usr/bin:/mnt/app\n";
    for (const auto& [path, text] :
         {std::pair(script, child + "200\n" + environment), std::pair(script + "x", child)}) {
        int status = -1;
        std::string out = Capture([&status, &file = path] {
                              EXPECT_EQ(0, SpawnProgram(file.c_str()));
                              fflush(stdout);
                              wait(&status);
                          }).out;
        EXPECT_EQ(0, status);
        ASSERT_NE(std::string::npos, out.find(parent));
        EXPECT_EQ(text, out.erase(out.find(parent), parent.size()));
    }
    unlink(script.c_str());
}

TEST(SystemControl, TheLastProcessOfANameCounts) {
    EXPECT_EQ("no_such_name process not exist, pid:-1!\n",
              Capture([] { EXPECT_EQ(0, IsProcessRunning("no_such_name")); }).out);
    int named[2];
    ASSERT_EQ(0, pipe(named));
    std::string expected;
    pid_t children[2];
    for (pid_t& child : children) {
        child = fork();
        if (child == 0) {
            prctl(PR_SET_NAME, "util_probe");
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            _exit(write(named[1], "", 1) == 1 ? pause() : 1);
        }
        char byte;
        ASSERT_EQ(1, read(named[0], &byte, 1));
        expected += "PID: " + std::to_string(child) + "\n";
    }
    EXPECT_EQ(expected + "kill util_probe ret = 0 \nutil_probe process exist!\n",
              Capture([] { EXPECT_EQ(1, IsProcessRunning("util_probe")); }).out);
    for (const pid_t child : children) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
}

TEST(TextFun, WhatATextIs) {
    const std::tuple<const char*, int, int, int> cases[] = {
        {"1.2.3.255", 1, 0, 0}, {"1.2.3.256", 0, 0, 0}, {"...", 1, 0, 0},
        {"1.2.3", 0, 0, 0},     {"1.2.3.4.", 0, 0, 0},  {"1.2.3.99999999999999999999", 0, 0, 0},
        {"1.2.3.a", 0, 0, 0},   {"", 0, 0, 1},          {"-", 0, 0, 1},
        {"-12", 0, 0, 1},       {"1-2", 0, 0, 0},       {"0x", 0, 0, 0},
        {"0x1", 0, 1, 0},       {"0XfA", 0, 1, 0},      {"0xg", 0, 0, 0},
        {"1x1", 0, 0, 0},       {nullptr, 0, 0, 0},
    };
    for (const auto& [text, ipv4, hex, integer] : cases) {
        EXPECT_EQ(std::tuple(ipv4, hex, integer),
                  std::tuple(IsIpv4Text(text), IsHexText(text), IsIntegerText(text)))
            << text;
    }
    EXPECT_STREQ("a \n", SkipBlanks(" \t\r\na \n"));
    EXPECT_EQ(nullptr, SkipBlanks(" \t\r\n"));
    char number[7];
    EXPECT_STREQ("-12345", IntToText(-1234567, number));
    in_addr_t addr = 0;
    EXPECT_EQ("MyGetHostByName, HostName :127.0.0.9/nMyGetHostByName, IP Address :127.0.0.9/n",
              Capture([&addr] { EXPECT_EQ(0, MyGetHostByName("127.0.0.9", &addr)); }).out);
    EXPECT_EQ(htonl(0x7F000009), addr);
    EXPECT_EQ("MyGetHostByName, Can't Get IP From Domain:a..b./n",
              Capture([&addr] { EXPECT_EQ(-1, MyGetHostByName("a..b", &addr)); }).out);
}

TEST(TimeFun, DatesAreThoseOfTheCLibrary) {
    const auto compare = [] {
        tm last = {};
        for (time_t t = 946684800; last.tm_year <= 200; t += 86400) { // from 2000-01-01 on
            tm day;
            gmtime_r(&t, &day);
            const int year = day.tm_year + 1900;
            ASSERT_EQ((day.tm_wday + 6) % 7, DayOfWeek(year, day.tm_mon + 1, day.tm_mday));
            ASSERT_TRUE(day.tm_mday != 1 || last.tm_mday == 0 ||
                        last.tm_mday == DaysInMonth(last.tm_year + 1900, last.tm_mon + 1));
            const int week = (day.tm_mday - 1) / 7;
            const bool isLast = day.tm_mday + 7 > DaysInMonth(year, day.tm_mon + 1);
            if (day.tm_wday == 0) {
                ASSERT_EQ(week < 4 ? day.tm_mday : 0,
                          NthSundayOfMonth(year, day.tm_mon + 1, week < 4 ? week : 5));
                ASSERT_EQ(isLast, day.tm_mday == NthSundayOfMonth(year, day.tm_mon + 1, 4));
            }
            last = day;
        }
    };
    Capture(compare);
    EXPECT_EQ("2024-3-31\n", Capture([] { NthSundayOfMonth(2024, 3, 4); }).out);
    EXPECT_EQ(28, DaysInMonth(1900, 2));
    EXPECT_EQ(31, DaysInMonth(2024, 13));
}

TEST(TimeFun, LocalTimesThereAndBack) {
    // The zone, a moment, its text, and how much later the record's moment is (summer time).
    const std::tuple<const char*, time_t, const char*, int> cases[] = {
        {"UTC0", 951782400, "2000-02-29 00:00:00", 0},
        {"<+08>-8", 1704038400, "2024-01-01 00:00:00", 0},
        {"<+08>-8", 1704038399, "2023-12-31 23:59:59", 0},
        {"<+0545>-5:45", 1709145900, "2024-02-29 00:30:00", 0},
        {"EST5EDT,M3.2.0,M11.1.0", 1710053999, "2024-03-10 01:59:59", 0},
        {"EST5EDT,M3.2.0,M11.1.0", 1710054000, "2024-03-10 03:00:00", 3600},
        {"CET-1CEST,M3.5.0,M10.5.0/3", 1729990800, "2024-10-27 02:00:00", 0},
        {"AEST-10AEDT,M10.1.0,M4.1.0/3", 1735649999, "2024-12-31 23:59:59", 3600},
        {"UTC0", 4107542400, "2100-03-01 00:00:00", 0},
    };
    for (const auto& [zone, t, text, later] : cases) {
        setenv("TZ", zone, 1);
        char formatted[kTimeTextSize];
        EXPECT_EQ(19, FormatTime(t, formatted));
        EXPECT_STREQ(text, formatted);
        EXPECT_STREQ(text, FormatTimeText(t, nullptr));
        EXPECT_EQ(nullptr, FormatTimeText(t + 1, formatted));
        EXPECT_STRNE(text, formatted);
        TIME_S human;
        TimeUnixToHuman(t, &human);
        EXPECT_EQ(t + later, TimeHumanToUnix(human)) << zone << ' ' << text;
    }
    TIME_S human;
    EXPECT_EQ("Invalid UTC time,do not set time before 1970-1-1 00:00:00.",
              Capture([&human] { TimeUnixToHuman(-1, &human); }).out);
    EXPECT_EQ(1970, static_cast<uint16_t>(human.usYear + 2000));
    EXPECT_DEATH(TimeUnixToHuman(LONG_MAX, &human), "ret!=__null");
}

TEST(TimeFun, AnElapsedTimeHas32Bits) {
    timeval now;
    const uint32_t second = static_cast<uint32_t>(NowTimeval(&now)->tv_sec);
    MicroTimer timer = {second - 3000, 0, 0, 0};
    const int64_t elapsed = TimerElapsedUs(&timer, false);
    EXPECT_NEAR(3000000000 - 0x100000000, elapsed, 2000000);
    TimerElapsedUs(&timer, true);
    EXPECT_LT(static_cast<uint64_t>(TimerElapsedUs(&timer, false)), 1000000U);
    EXPECT_LT(static_cast<uint64_t>(MicrosSince(now.tv_sec * 1000000LL)), 60000000U);
}

TEST(FileFun, WholeFiles) {
    const std::string path = testing::TempDir() + "filefun" + std::to_string(getpid());
    const char* file = path.c_str();
    EXPECT_EQ(6, WriteWholeFile("ab\0def", 6, file));
    char buffer[8] = {};
    size_t size = 0;
    EXPECT_EQ(0, ReadWholeFile(buffer, 4, &size, file));
    EXPECT_EQ(6U, size);
    EXPECT_EQ(std::string("ab\0d\0", 5), std::string(buffer, 5));
    EXPECT_EQ(0, ReplaceContentFile(file, "new"));
    EXPECT_EQ("--------------strFile, data:more, size:4.\n",
              Capture([file] { AppendTimestampedText(file, "more"); }).out);
    EXPECT_EQ(3 + 22 + 4, FileSize(file));
    char text[32] = {};
    EXPECT_EQ(0, ReadWholeFile(text, sizeof(text), nullptr, file));
    std::replace_if(text, text + sizeof(text), isdigit, '0');
    EXPECT_STREQ("new\r\n[00/00/00 00:00:00]:more", text);
    unlink(file);
    EXPECT_EQ("ReplaceContentFile, fopen [/] failed.\nerr while open file, fullpath=/\n"
              "err while write file, fullpath=/dev/full, rc=0, except=2\nread file error\n",
              Capture([&] {
                  EXPECT_EQ(-1, ReplaceContentFile("/", "x"));
                  AppendTimestampedText("/", "x");
                  EXPECT_EQ(-1, WriteWholeFile("xy", 2, "/"));
                  EXPECT_EQ(-1, WriteWholeFile("xy", 2, "/dev/full"));
                  EXPECT_EQ(-1, ReadWholeFile(buffer, 8, &size, file));
                  EXPECT_EQ(-1, ReadWholeFile(buffer, 8, &size, "/"));
                  EXPECT_EQ(0, FileSize(file));
              }).out);
}

} // namespace
