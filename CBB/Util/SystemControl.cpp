// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/SystemControl.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <string>
#include <sys/reboot.h>
#include <unistd.h>

#include "CBB/Util/Owner.h"

SystemCalls g_stSystemCalls = {system, reboot, sleep};

namespace {

constexpr unsigned int kPoweroffGrace = 2; // seconds
constexpr int kFirstClosed = 3;
constexpr int kLastClosed = 199;
constexpr int kNoPid = -1;

[[noreturn]] void RunChild(const char* path) {
    puts("--------------------------child process------------------");
    fflush(stdout);
    for (int fd = kFirstClosed; fd <= kLastClosed; ++fd)
        close(fd);
    char variable[] = "PATH=/sbin/:/bin/:/lib/:/usr/sbin:/usr/bin:/mnt/app";
    char* const environment[] = {variable, nullptr};
    char* const arguments[] = {const_cast<char*>(path), nullptr};
    execve(path, arguments, environment);
    // Not exit: what the parent registered to run at its end must not run in a copy of it.
    _exit(0);
}

// The second word of the status file's first line, "" when there is none.
std::string StatusName(const std::string& folder) {
    const FilePtr file(fopen((folder + "/status").c_str(), "r"));
    char line[512];
    char word[sizeof(line)];
    if (file == nullptr || fgets(line, sizeof(line), file.get()) == nullptr ||
        sscanf(line, "%*s %511s", word) != 1) {
        return "";
    }
    return word;
}

int LastPidNamed(const char* name) {
    int pid = kNoPid;
    const DirPtr proc(opendir("/proc"));
    while (const dirent* entry = proc != nullptr ? readdir(proc.get()) : nullptr) {
        const std::string folder = entry->d_name;
        if (folder == "." || folder == "..")
            continue;
        const std::string found = StatusName("/proc/" + folder);
        if (!found.empty() && found == name) {
            printf("PID: %s\n", entry->d_name);
            pid = atoi(entry->d_name);
        }
    }
    return pid;
}

} // namespace

int RunCommand(const char* command) {
    const struct sigaction standard = {}; // SIG_DFL
    struct sigaction previous;
    sigaction(SIGCHLD, &standard, &previous);
    const int rc = g_stSystemCalls.runShell(command);
    sigaction(SIGCHLD, &previous, nullptr);
    return rc;
}

void SystemReboot() {
    fputs("system reboot!\n", stderr);
    g_stSystemCalls.reboot(RB_AUTOBOOT);
    RunCommand("busybox reboot");
}

void SystemPoweroff() {
    fputs("ShutdownSystem!\n", stderr);
    RunCommand("busybox poweroff");
    g_stSystemCalls.sleep(kPoweroffGrace);
    g_stSystemCalls.reboot(RB_POWER_OFF);
}

void RunSdShellScript() {
    RunCommand("/sd/ShellScript");
    RunCommand("rm -fr  /sd/ShellScript");
}

int SpawnProgram(const char* path) {
    // Else the child would print what is still waiting in the buffer a second time.
    fflush(stdout);
    const pid_t child = fork();
    if (child < 0) {
        perror("vfork error:");
        return -1;
    }
    if (child == 0)
        RunChild(path);
    puts("--------------------------parent process------------------");
    return 0;
}

int IsProcessRunning(const char* name) {
    const int pid = LastPidNamed(name);
    if (pid == kNoPid) {
        printf("%s process not exist, pid:-1!\n", name);
        return 0;
    }
    const int rc = kill(pid, 0);
    printf("kill %s ret = %d \n", name, rc);
    if (rc != 0) {
        printf("%s process not exist, kill failed!\n", name);
        return 0;
    }
    printf("%s process exist!\n", name);
    return 1;
}
