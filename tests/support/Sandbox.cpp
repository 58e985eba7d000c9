// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/Sandbox.h"

#include <cstdlib>
#include <err.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

void WriteText(const char* path, const std::string& text) {
    std::ofstream file(path);
    file << text << std::flush;
    EXPECT_TRUE(file.good()) << path;
}

// In a user namespace.
bool BecomeRoot() {
    const std::string uid = std::to_string(geteuid()), gid = std::to_string(getegid());
    if (unshare(CLONE_NEWUSER) != 0)
        return false;
    WriteText("/proc/self/setgroups", "deny");
    WriteText("/proc/self/uid_map", "0 " + uid + " 1");
    WriteText("/proc/self/gid_map", "0 " + gid + " 1");
    return true;
}

} // namespace

void EnterSandbox() {
    const bool left = unshare(CLONE_NEWNET) == 0 || (BecomeRoot() && unshare(CLONE_NEWNET) == 0);
    const int peer = open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC); // keeps it
    if (!left || unshare(CLONE_NEWNET | CLONE_NEWNS) != 0 ||
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        err(1, "no namespaces of our own"); // what a test does next would change the machine
    Shell("peer=/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(peer) +
          " && . " FURNISH);
}

void Shell(const std::string& command) {
    // Not every user's path has sbin.
    ASSERT_EQ(system(("PATH=$PATH:/usr/sbin:/sbin; " + command).c_str()), 0) << command;
}

void ReplaceFile(const char* path, const std::string& content) {
    if (access(path, F_OK) != 0) {
        ReplaceFolder(std::filesystem::path(path).parent_path());
        unlink(path); // a dangling link
        WriteText(path, "");
    }
    char copy[] = "/run/XXXXXX";
    close(mkstemp(copy));
    WriteText(copy, content);
    Shell(std::string("mount --bind ") + copy + " " + path);
}

void ReplaceFolder(const std::string& path) {
    Shell("cd $(mktemp -d -p /run) && mkdir upper work && mount -t overlay none " + path +
          " -o lowerdir=" + path + ",upperdir=$PWD/upper,workdir=$PWD/work");
}
