// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/SystemControl.h"

#include <sys/prctl.h>

#include "tests/unit/Unit.h"

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

TEST(SystemControl, ARunCommandKeepsItsStatusFromTheHandler) {
    const auto reap = +[](int) { waitpid(-1, nullptr, 0); };
    signal(SIGCHLD, reap);
    EXPECT_EQ(3, WEXITSTATUS(RunCommand("exit 3")));
    EXPECT_EQ(reap, signal(SIGCHLD, SIG_DFL));
}

TEST(SystemControl, ASpawnedProgramInheritsNeitherDescriptorsNorVariables) {
    const std::string script = testing::TempDir() + "spawned" + std::to_string(getpid());
    std::ofstream(script) << "#!/bin/sh\n"
                             "for n in 3 50 199 200; do [ -e /proc/$$/fd/$n ] && echo $n; done\n"
                             "tr '\\0' '\\n' < /proc/$$/environ\n";
    chmod(script.c_str(), 0700);
    for (const int fd : {3, 50, 199, 200})
        dup2(STDERR_FILENO, fd);
    const std::string parent = "--------------------------parent process------------------\n";
    const std::string child = "once\n--------------------------child process------------------\n";
    const auto spawn = [&script] {
        printf("once\n"); // waits in the buffer when the child gets a copy of that
        int status = SpawnProgram(script.c_str());
        return status == 0 && wait(&status) > 0 && status == 0 ? 9 : 1;
    };
    for (const char* printed : {"200\nPATH=/sbin/:/bin/:/lib/:/usr/sbin:/usr/bin:/mnt/app\n", ""}) {
        const Captured spawned = CaptureInChild(spawn); // a program in its place would return 0
        EXPECT_EQ(std::pair(child + printed + parent, 9 << 8),
                  std::pair(spawned.out, spawned.status));
        unlink(script.c_str());
    }
    const Captured refused = CaptureInChild([] {
        const rlimit none{};
        if (getuid() == 0 && setuid(65534) != 0) // no limit binds root
            return 1;
        return setrlimit(RLIMIT_NPROC, &none) + SpawnProgram("/") + 1;
    });
    EXPECT_EQ(refused.err, "vfork error:: Resource temporarily unavailable\n");
    EXPECT_EQ(refused.status, 0);
}

TEST(SystemControl, AProcessIsFoundByItsName) {
    prctl(PR_SET_NAME, "util_probe");
    EXPECT_EQ("1 PID: self\nPID: thread-self\nPID: " + std::to_string(getpid()) +
                  "\nkill util_probe ret = 0 \nutil_probe process exist!\n",
              Told([] { return IsProcessRunning("util_probe"); }));
    EXPECT_EQ(Told([] { return IsProcessRunning("no_such"); }),
              "0 no_such process not exist, pid:-1!\n");
}
