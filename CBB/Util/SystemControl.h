// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// Commands, programs and the machine's power.

// What acts on the machine. The defaults are the C library's functions; a test puts its own in.
struct SystemCalls {
    int (*runShell)(const char* command);        // system(3)
    int (*reboot)(int command);                  // reboot(2)
    unsigned int (*sleep)(unsigned int seconds); // sleep(3)
};
extern SystemCalls g_stSystemCalls;

// Runs a shell command and returns the result of system(3). SIGCHLD has its default action
// meanwhile and the caller's again afterwards, so that no handler reaps the shell first. The action
// is the whole process's: not for two threads at a time.
int RunCommand(const char* command);

// Restarts the machine through the kernel, at once; "busybox reboot" should that return.
void SystemReboot();

// "busybox poweroff", and two seconds later through the kernel: the other way round than
// SystemReboot, on purpose, so that services end in order first.
void SystemPoweroff();

// Runs "/sd/ShellScript" and deletes it, so that a script on the card runs once.
void RunSdShellScript();

// Starts a program without arguments in a child with descriptors 3 to 199 closed and PATH as its
// one environment variable. Returns 0 at once, -1 when fork(2) fails; the child is never waited
// for, and a program that cannot be started shows nowhere (the child ends with 0).
int SpawnProgram(const char* path);

// 1 when a process has this name (the first word of its name in /proc/PID/status, 15 characters at
// most) and kill(2) with signal 0 reaches it, else 0. Of several the last in /proc counts. No
// signal is sent, whatever the printed lines say.
int IsProcessRunning(const char* name);
