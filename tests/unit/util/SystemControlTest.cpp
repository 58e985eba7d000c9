// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/OtherFun.h"

#include <algorithm>
#include <arpa/inet.h>
#include <climits>
#include <csignal>
#include <gtest/gtest.h>
#include <limits>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

#include "tests/support/Capture.h"

namespace {

TEST(SystemControl, CommandsAndCallsInTheirOrder) {
    const SystemCalls real = g_stSystemCalls;
    g_stSystemCalls = {
        [](const char* command) { return printf("%s;", command); },
        [](int command) { return printf("reboot %#x;", static_cast<unsigned>(command)); },
        [](unsigned int s) { return static_cast<unsigned>(printf("sleep %u;", s)); }};
    const std::tuple<void (*)(), const char*, const char*> cases[] = {
        {SystemReboot, "system reboot!\n", "reboot 0x1234567;busybox reboot;"},
        {SystemPoweroff, "ShutdownSystem!\n", "busybox poweroff;sleep 2;reboot 0x4321fedc;"},
        {RunSdShellScript, "", "/sd/ShellScript;rm -fr  /sd/ShellScript;"},
    };
    for (const auto& [operation, err, calls] : cases) {
        const Captured captured = Capture(operation);
        EXPECT_EQ(std::string(err) + calls, captured.err + captured.out);
    }
    g_stSystemCalls = real;
}

void Reap(int) {
    waitpid(-1, nullptr, 0);
}

TEST(SystemControl, ARunCommandKeepsItsStatusFromTheHandler) {
    signal(SIGCHLD, Reap);
    EXPECT_EQ(3, WEXITSTATUS(RunCommand("exit 3")));
    EXPECT_EQ(Reap, signal(SIGCHLD, SIG_DFL));
}

TEST(SystemControl, ASpawnedProgramInheritsNeitherDescriptorsNorVariables) {
    const std::string script = testing::TempDir() + "spawned" + std::to_string(getpid());
    ReplaceContentFile(script.c_str(),
                       "#!/bin/sh\n"
                       "for n in 3 50 199 200; do [ -e /proc/$$/fd/$n ] && echo $n; done\n"
                       "tr '\\0' '\\n' < /proc/$$/environ\n");
    chmod(script.c_str(), 0700);
    for (const int fd : {3, 50, 199, 200})
        dup2(STDERR_FILENO, fd);
    const std::string parent = "--------------------------parent process------------------\n";
    const std::string child = "--------------------------child process------------------\n";
    const auto spawn = [&script] {
        int status = SpawnProgram(script.c_str());
        EXPECT_TRUE(status == 0 && wait(&status) > 0 && status == 0) << status;
    };
    EXPECT_EQ(child + "200\nPATH=/sbin/:/bin/:/lib/:/usr/sbin:/usr/bin:/mnt/app\n" + parent,
              Capture(spawn).out);
    unlink(script.c_str());
    EXPECT_EQ(child + parent, Capture(spawn).out);
}

TEST(SystemControl, AProcessIsFoundByItsName) {
    prctl(PR_SET_NAME, "util_probe");
    EXPECT_EQ("PID: self\nPID: thread-self\nPID: " + std::to_string(getpid()) +
                  "\nkill util_probe ret = 0 \nutil_probe process exist!\n",
              Capture([] { EXPECT_EQ(1, IsProcessRunning("util_probe")); }).out);
    EXPECT_EQ("no_such process not exist, pid:-1!\n",
              Capture([] { EXPECT_EQ(0, IsProcessRunning("no_such")); }).out);
}

TEST(TextFun, WhatATextIs) {
    // The text, and whether it is an address, hex, an integer.
    const std::tuple<const char*, int, int, int> cases[] = {
        {"1.2.3.255", 1, 0, 0}, {"1.2.3.256", 0, 0, 0}, {"...", 1, 0, 0},  {"1.2.3.4.", 0, 0, 0},
        {"1.2.3.a", 0, 0, 0},   {"", 0, 0, 1},          {"-", 0, 0, 1},    {"-12", 0, 0, 1},
        {"1-2", 0, 0, 0},       {"0x", 0, 0, 0},        {"0x1", 0, 1, 0},  {"0XfA", 0, 1, 0},
        {"0xg", 0, 0, 0},       {"1x1", 0, 0, 0},       {nullptr, 0, 0, 0}};
    for (const auto& [text, ipv4, hex, integer] : cases)
        EXPECT_EQ(ipv4 + 2 * hex + 4 * integer,
                  IsIpv4Text(text) + 2 * IsHexText(text) + 4 * IsIntegerText(text))
            << text;
    EXPECT_EQ(0, IsIpv4Text("1.2.3.4294967297"));
    EXPECT_STREQ("a \n", SkipBlanks(" \t\r\na \n"));
    EXPECT_EQ(nullptr, SkipBlanks(" \t\r\n"));
    char number[7];
    EXPECT_STREQ("-12345", IntToText(-1234567, number));
    in_addr_t addr = 0;
    EXPECT_EQ("MyGetHostByName, HostName :127.0.0.9/nMyGetHostByName, IP Address :127.0.0.9/n",
              Capture([&addr] { EXPECT_EQ(0, MyGetHostByName("127.0.0.9", &addr)); }).out);
    EXPECT_EQ(htonl(0x7F000009), addr);
}

TEST(TimeFun, DatesAreThoseOfTheCLibrary) {
    Capture([] {
        constexpr time_t week = 604800;
        for (time_t t = 946684800; t < 4133980800; t += week / 7) { // 2000-01-01 to 2100-12-31
            const time_t later = t + week;
            const bool isLast = gmtime(&later)->tm_mon != gmtime(&t)->tm_mon;
            const tm date = *gmtime(&t);
            const int year = date.tm_year + 1900, month = date.tm_mon + 1, day = date.tm_mday;
            ASSERT_EQ((date.tm_wday + 6) % 7, DayOfWeek(year, month, day));
            for (int n = 0; n <= 4 && date.tm_wday == 0; ++n)
                ASSERT_EQ(n == 4 ? isLast : n == (day - 1) / 7,
                          day == NthSundayOfMonth(year, month, n));
        }
    });
    EXPECT_EQ("2024-3-31\n", Capture([] { EXPECT_EQ(31, NthSundayOfMonth(2024, 3, 4)); }).out);
    EXPECT_EQ(28, DaysInMonth(1900, 2));
    EXPECT_EQ(31, DaysInMonth(2024, 13));
}

TEST(TimeFun, LocalTimesThereAndBack) {
    // The zone, a moment, its text, and how much later the record's moment is (summer time).
    const std::tuple<const char*, time_t, const char*, int> cases[] = {
        {"<+08>-8", 1704038400, "2024-01-01 00:00:00", 0},
        {"<+08>-8", 1704038399, "2023-12-31 23:59:59", 0},
        {"<+0545>-5:45", 1709145900, "2024-02-29 00:30:00", 0},
        {"EST5EDT,M3.2.0,M11.1.0", 1710053999, "2024-03-10 01:59:59", 0},
        {"EST5EDT,M3.2.0,M11.1.0", 1710054000, "2024-03-10 03:00:00", 3600},
        {"AEST-10AEDT,M10.1.0,M4.1.0/3", 1735649999, "2024-12-31 23:59:59", 3600},
        {"UTC0", 4107542400, "2100-03-01 00:00:00", 0},
    };
    for (const auto& [zone, t, text, later] : cases) {
        setenv("TZ", zone, 1);
        char formatted[kTimeTextSize];
        EXPECT_EQ(nullptr, FormatTimeText(t, formatted));
        EXPECT_STREQ(text, formatted);
        EXPECT_EQ(19, FormatTime(t + 60, formatted));
        EXPECT_STREQ(FormatTimeText(t + 60, nullptr), formatted);
        TIME_S human;
        TimeUnixToHuman(t, &human);
        EXPECT_EQ(t + later, TimeHumanToUnix(human)) << zone << ' ' << text;
    }
    TIME_S human;
    EXPECT_EQ("Invalid UTC time,do not set time before 1970-1-1 00:00:00.",
              Capture([&human] { TimeUnixToHuman(-1, &human); }).out);
    MicroTimer timer = {static_cast<uint32_t>(time(nullptr) - 3000), 0, 0, 0};
    EXPECT_NEAR(3000000000 - 0x100000000, TimerElapsedUs(&timer, true), 2000000);
    EXPECT_DEATH(TimeUnixToHuman(std::numeric_limits<time_t>::max(), &human), "ret!=__null");
}

TEST(FileFun, WholeFiles) {
    const std::string path = testing::TempDir() + "filefun" + std::to_string(getpid());
    const char* file = path.c_str();
    size_t size = 0;
    char text[32] = {};
    EXPECT_EQ(6, WriteWholeFile("longer", 6, file));
    EXPECT_EQ(0, ReplaceContentFile(file, "new"));
    AppendTimestampedText(file, "more");
    EXPECT_EQ(0, ReadWholeFile(text, 28, &size, file));
    EXPECT_EQ(FileSize(file), static_cast<int64_t>(size));
    std::replace_if(text, text + size, isdigit, '0');
    EXPECT_STREQ("new\r\n[00/00/00 00:00:00]:mor", text);
    WriteWholeFile("x", -1, file);
    EXPECT_EQ(0, FileSize(file));
    unlink(file);
    const auto fail = [&text] {
        EXPECT_EQ(-2, ReplaceContentFile("/", "x") + WriteWholeFile("xy", 2, "/"));
        EXPECT_EQ(-2, WriteWholeFile("xy", 2, "/dev/full") + ReadWholeFile(text, 8, nullptr, "/"));
    };
    EXPECT_EQ("ReplaceContentFile, fopen [/] failed.\nerr while open file, fullpath=/\n"
              "err while write file, fullpath=/dev/full, rc=0, except=2\nread file error\n",
              Capture(fail).out);
}

} // namespace
