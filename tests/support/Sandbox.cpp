// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/Sandbox.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int g_ownNet = -1;
int g_peerNet = -1; // holds the peer's namespace: no process lives in it

bool Failed(std::string* error, const std::string& step) {
    *error = "sandbox: " + step + ": " + strerror(errno);
    return false;
}

bool WriteText(const std::string& path, const std::string& text) {
    std::ofstream file(path);
    file << text << std::flush;
    return file.good();
}

bool BecomeNamespaceRoot(std::string* error) {
    const std::string uid = std::to_string(geteuid());
    const std::string gid = std::to_string(getegid());
    if (unshare(CLONE_NEWUSER) != 0)
        return Failed(error, "not root, and no user namespace may be made (a sanitizer's thread "
                             "counts against it too)");
    if (!WriteText("/proc/self/setgroups", "deny") ||
        !WriteText("/proc/self/uid_map", "0 " + uid + " 1") ||
        !WriteText("/proc/self/gid_map", "0 " + gid + " 1"))
        return Failed(error, "mapping the user");
    return true;
}

// sbin is not on the search path of every user.
std::string IpBatch(const std::string& lines) {
    return "PATH=$PATH:/usr/sbin:/sbin ip -batch - <<END\n" + lines + "END\n";
}

// The kernel brings a new link's queue up a moment after its carrier; asking for the link's state
// makes it do so now.
bool SettleLink(const char* name) {
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ethtool_value link = {ETHTOOL_GLINK, 0};
    ifreq request = {};
    strncpy(request.ifr_name, name, IFNAMSIZ - 1);
    request.ifr_data = reinterpret_cast<char*>(&link);
    const bool up = ioctl(fd, SIOCETHTOOL, &request) == 0 && link.data == 1;
    close(fd);
    return up;
}

int NewNetwork() {
    return unshare(CLONE_NEWNET) == 0 ? open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC) : -1;
}

// A file system in memory, seen at its path for the object's life; what was mounted from it stays.
class Layer {
public:
    Layer() {
        if (mkdtemp(m_path) == nullptr || mount("none", m_path, "tmpfs", 0, nullptr) != 0)
            ADD_FAILURE() << m_path << ": " << strerror(errno);
    }
    ~Layer() {
        umount2(m_path, MNT_DETACH);
        rmdir(m_path);
    }
    Layer(const Layer&) = delete;
    Layer& operator=(const Layer&) = delete;

    std::string Path() const { return m_path; }

private:
    char m_path[sizeof("/tmp/layer-XXXXXX")] = "/tmp/layer-XXXXXX";
};

} // namespace

bool EnterSandbox(std::string* error) {
    g_peerNet = NewNetwork();
    if (g_peerNet < 0) {
        if (!BecomeNamespaceRoot(error))
            return false;
        g_peerNet = NewNetwork();
        if (g_peerNet < 0)
            return Failed(error, "the peer's network namespace");
    }
    g_ownNet = NewNetwork();
    if (g_ownNet < 0)
        return Failed(error, "network namespace");
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return Failed(error, "mount namespace");

    const std::string peer =
        "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(g_peerNet);
    bool up = system(IpBatch("link set lo up\n"
                             "link add eth0 type veth peer name peer0 netns " +
                             peer +
                             "\naddr add 192.168.50.2/24 brd 192.168.50.255 dev eth0\n"
                             "link set eth0 up\n")
                         .c_str()) == 0;
    InPeer([&up] {
        up = up &&
             system(IpBatch("link set lo up\n"
                            "addr add 192.168.50.1/24 brd 192.168.50.255 dev peer0\n"
                            "link set peer0 up\n")
                        .c_str()) == 0 &&
             SettleLink("peer0");
    });
    if (!up || !SettleLink("eth0"))
        return Failed(error, "setting up eth0 with ip(8)");
    return true;
}

void InPeer(const std::function<void()>& body) {
    ASSERT_EQ(setns(g_peerNet, CLONE_NEWNET), 0) << strerror(errno);
    body();
    ASSERT_EQ(setns(g_ownNet, CLONE_NEWNET), 0) << strerror(errno);
}

void Shell(const std::string& command) {
    ASSERT_EQ(system(("PATH=$PATH:/usr/sbin:/sbin; " + command).c_str()), 0) << command;
}

void ReplaceFile(const char* path, const std::string& content) {
    std::string target = path;
    if (char* real = realpath(path, nullptr)) {
        target = real;
        free(real);
    } else {
        ReplaceFolder(target.substr(0, target.rfind('/')));
        unlink(path); // a dangling link
        ASSERT_TRUE(WriteText(path, "")) << path;
    }
    const Layer layer;
    const std::string copy = layer.Path() + "/copy";
    const bool done = WriteText(copy, content) &&
                      mount(copy.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) == 0;
    ASSERT_TRUE(done) << path << ": " << strerror(errno);
}

void ReplaceFolder(const std::string& path) {
    const Layer layer;
    const std::string upper = layer.Path() + "/upper", work = layer.Path() + "/work";
    const std::string options = "lowerdir=" + path + ",upperdir=" + upper + ",workdir=" + work;
    const bool done = mkdir(upper.c_str(), 0755) == 0 && mkdir(work.c_str(), 0755) == 0 &&
                      mount("none", path.c_str(), "overlay", 0, options.c_str()) == 0;
    ASSERT_TRUE(done) << path << ": " << strerror(errno);
}
