// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/Sandbox.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

// The peer's network has no process. The kernel brings a new link's queue up a moment after its
// carrier.
constexpr char kFurnish[] = R"(
mount -t tmpfs none /run || exit # for what replaces files
in_peer="nsenter --net=$peer"
ip -batch - <<END &&
link set lo up
link add eth0 type veth peer name peer0
link set peer0 netns $peer
addr add 192.168.50.2/24 brd 192.168.50.255 dev eth0
link set eth0 up
END
$in_peer ip -batch - <<END || exit
link set lo up
addr add 192.168.50.1/24 brd 192.168.50.255 dev peer0
link set peer0 up
END
until ip link show eth0 | grep -q 'state UP'; do :; done
until $in_peer ip link show peer0 | grep -q 'state UP'; do :; done
)";

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

bool EnterNewNetwork() {
    return unshare(CLONE_NEWNET) == 0;
}

int Run(const std::string& script) {
    return system(("PATH=$PATH:/usr/sbin:/sbin; " + script).c_str()); // not on every user's
}

} // namespace

bool EnterSandbox(std::string* error) {
    const bool entered = EnterNewNetwork() || (BecomeRoot() && EnterNewNetwork());
    const int peer = open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC); // keeps it
    if (!entered || !EnterNewNetwork() || unshare(CLONE_NEWNS) != 0 ||
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        *error = std::string("no namespaces of our own: ") + strerror(errno);
    else if (Run("peer=/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(peer) +
                 kFurnish) != 0)
        *error = "mount(8), ip(8) or nsenter(1) failed";
    return error->empty();
}

void Shell(const std::string& command) {
    ASSERT_EQ(Run(command), 0) << command;
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
