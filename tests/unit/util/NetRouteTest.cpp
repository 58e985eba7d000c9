// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/NetTool.h"

#include <arpa/inet.h>
#include <cstring>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <thread>

#include "CBB/Util/NetShared.h"
#include "CBB/Util/Owner.h"
#include "tests/support/Capture.h"
#include "tests/support/Sandbox.h"

namespace {

uint32_t Ip(const char* dotted) {
    return inet_addr(dotted);
}

// "RESULT OUTPUT" of a call.
std::string Told(const std::function<int()>& call) {
    int result = 0;
    const std::string out = Capture([&] { result = call(); }).out;
    return std::to_string(result) + " " + out;
}

// "RESULT ADDRESS" of a getter, the address being 0.0.0.7 before.
std::string Found(int (*get)(const char*, uint32_t*), const char* name) {
    uint32_t addr = Ip("0.0.0.7");
    const int result = get(name, &addr);
    return std::to_string(result) + " " + inet_ntoa({addr});
}

class Net : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(EnterSandbox(&error)) << error;
        ReplaceFile("/etc/resolv.conf", "# none\n");
        ReplaceFile("/etc/hosts", "192.0.2.7 server.test\n");
    }
};

TEST_F(Net, InterfaceIsReadAndChanged) {
    const unsigned char mac[6] = {2, 0, 0x5e, 0x10, 0xab, 0xfe}, multicast[6] = {1};
    EXPECT_EQ(Found(GetIfAddr, "eth0"), "0 192.168.50.2");
    EXPECT_EQ(Found(GetIfAddr, "eth7"), "-1 0.0.0.7");
    EXPECT_EQ(Found(GetIfNetmask, nullptr), "-2 0.0.0.7");
    const Captured told = Capture([] { GetDstAddrRouteIfAddr(Ip("192.168.50.9")); });
    EXPECT_NE(told.out.find("1134"), std::string::npos) << told.out;
    char name[12] = "";
    EXPECT_EQ(GetRouteIfName("203.0.113.1", name), -1);
    EXPECT_EQ(SetIfAddr("eth7", 1), -1);
    EXPECT_EQ(SetIfNetmask(nullptr, 1), -2);
    EXPECT_EQ(Told([&] { return SetMacAddress("eth7", mac); }),
              "-1 SetMacAddress ioctl SIOCGIFFLAGS failed(No such device)");
    EXPECT_EQ(Told([&] { return SetMacAddress("eth0", multicast); }),
              "-1 SetMacAddress call ioctl failed(Cannot assign requested address)");
    EXPECT_EQ(SetMacAddress("eth0", mac), 0);
    Shell("ip link show eth0 | grep -q MULTICAST");
    EXPECT_EQ(SetIfAddr("eth0", Ip("172.16.3.4")), 0);
    EXPECT_EQ(SetIfNetmask("eth0", Ip("255.255.255.128")), 0);
    Shell("ip link show eth0 | grep -q '<.*[<,]UP[,>]' && ip route add default via 172.16.3.1");
    NetIfInfo info;
    EXPECT_EQ(GetIfInfo("eth0", &info), 0);
    EXPECT_EQ(info.uiAddr, Ip("172.16.3.4"));
    EXPECT_EQ(info.uiNetmask, Ip("255.255.255.128"));
    EXPECT_EQ(info.uiGateway, Ip("172.16.3.1"));
    EXPECT_EQ(memcmp(info.ucMac, mac, 6), 0);
    EXPECT_EQ(GetIfInfo("eth7", &info), 0);
    EXPECT_EQ(info.uiAddr, 0U) << "what was there before is gone";
}

std::string DefaultRoutes(int capacity) {
    DefaultGateway entries[3];
    EXPECT_EQ(GetAllDefaultGateway(&capacity, entries), 0);
    std::string text;
    for (int i = 0; i < capacity; ++i)
        text += std::string(entries[i].szIfName) + "=" + inet_ntoa({entries[i].uiGateway}) + " ";
    return text;
}

TEST_F(Net, TwoDefaultRoutes) {
    Shell("ip link add wlan0 type veth peer name wlan1 && ip link set wlan1 up && "
          "ip addr add 10.0.0.2/24 dev wlan0 && ip link set wlan0 up");
    const std::string set = "SetRoute, [0x132a8c0] - [192.168.50.1], Action=";
    const std::string ok = "SetRoute ioctl ok, SIOC[ADD|DEL]RT, iRequest=0x890";
    EXPECT_EQ(Told([] { return SetRoute("eth0", Ip("192.168.50.1"), 1); }),
              "0 " + set + "1\n" + ok + "b. \n");
    EXPECT_EQ(SetRoute("eth7", Ip("192.168.50.1"), 1), 0); // refused, which only the console tells
    Shell("ip route append default via 10.0.0.1 dev wlan0");
    EXPECT_EQ(DefaultRoutes(1), "eth0=192.168.50.1 ");
    EXPECT_EQ(DefaultRoutes(3), "eth0=192.168.50.1 wlan0=10.0.0.1 ");
    EXPECT_EQ(Found(GetIfGateway, "wlan0"), "0 10.0.0.1");
    EXPECT_EQ(Found(GetIfGateway, "lo"), "0 0.0.0.0");
    EXPECT_EQ(Found(GetIfNetRoute, "wlan0"), "0 10.0.0.0");
    EXPECT_EQ(Told(PrintRouteTable), "0 Destination\tGenmask\t\tGateway\t\tUse Iface\n"
                                     "0.0.0.0\t0.0.0.0\t192.168.50.1\teth0\n"
                                     "0.0.0.0\t0.0.0.0\t10.0.0.1\twlan0\n"
                                     "10.0.0.0\t255.255.255.0\t0.0.0.0\twlan0\n"
                                     "192.168.50.0\t255.255.255.0\t0.0.0.0\teth0\n");
    char name[12] = "";
    EXPECT_EQ(GetRouteIfName("10.0.0.9", name), 0);
    EXPECT_STREQ(name, "eth0"); // by the default route before
    EXPECT_EQ(GetDstAddrRouteIfAddr(Ip("192.168.50.9")), Ip("192.168.50.2"));
    EXPECT_STREQ(GetDefaultRouteIfAddrText(), "10.0.0.2");

    const std::string row = ": ifName=eth0, flgs:3, dest:0, mask:0, gatew:0x132a8c0.\n";
    const std::string deleted = "0 DelRoute, ifName=eth0.\nDelRoute, Get" + row + "DelRoute, Del" +
                                row + set + "2\n" + ok + "c. \nDelRoute, Get: ifName=wlan0,";
    EXPECT_EQ(Told([] { return DelRoute("eth0"); }).substr(0, deleted.size()), deleted);
    EXPECT_EQ(DefaultRoutes(3), "wlan0=10.0.0.1 ");
    EXPECT_EQ(SetDefaultGateway("eth0", Ip("192.168.50.1")), 0);
    EXPECT_EQ(DefaultRoutes(3), "eth0=192.168.50.1 ");
    Shell("printf 'nameserver 8.8.8.8\\nnameserver 8.8.4.4\\n' | cmp - /etc/resolv.conf");
    Shell("ip addr flush dev eth0 && ip addr flush dev wlan0");
    EXPECT_EQ(Capture([] { EXPECT_EQ(GetDstAddrRouteIfAddr(1), INADDR_NONE); }).err,
              "can not get route table\n");
}

TEST_F(Net, UnreadableRouteTable) {
    const Captured child = CaptureInChild([] {
        mount("none", "/proc/self/net", "tmpfs", 0, nullptr);
        EXPECT_EQ(Found(GetIfGateway, "eth0"), "-1 0.0.0.7");
        EXPECT_EQ(Told([] { return GetAllDefaultGateway(nullptr, nullptr); }),
                  "-1 GetAllDefaultGateway, open file[/proc/net/route] faild.");
        EXPECT_EQ(Told([] { return DelRoute("eth0"); }),
                  "-1 DelRoute, ifName=eth0.\n===>>File:CBB/Util/NetTool-Line:950 fopen failed No "
                  "such file or directory\n");
        ReadRouteTable();
        return 0;
    });
    EXPECT_EQ(WEXITSTATUS(child.status), 1);
    EXPECT_EQ(child.err, "can't open file!\n: No such file or directory\n");
    EXPECT_EQ(child.out, ""); // nothing failed there
}

TEST(NetText, RouteEntryIsChecked) {
    const auto build = [](const char* dst, const char* mask, const char* gateway, int host = 0) {
        rtentry route;
        return BuildRoute(dst, Ip(mask), gateway, static_cast<uint16_t>(RTF_UP | host), &route);
    };
    EXPECT_TRUE(build("10.1.0.0", "255.255.0.0", "10.0.0.1"));
    EXPECT_FALSE(build("x", "0.0.0.0", "10.0.0.1"));
    EXPECT_FALSE(build("default", "0.0.0.0", "x"));
    EXPECT_FALSE(build("default", "0.0.0.0", "default"));
    EXPECT_FALSE(build("10.1.0.1", "255.255.0.0", "10.0.0.1", RTF_HOST));
    EXPECT_FALSE(build("10.1.0.0", "255.0.255.0", "10.0.0.1"));
    EXPECT_FALSE(build("10.1.0.1", "255.255.0.0", "10.0.0.1"));
}

TEST(NetText, RouteLines) {
    const std::string good = "eth0\t0032A8C0\t00000000\t0001\t0\t0\t-1\t00FFFFFF\t0\t0\t0\n";
    const std::string eight = good.substr(0, good.find("FF\t") + 2);
    const auto names = [](const std::string& text, const RouteForm& form) {
        std::string result;
        for (const RouteRow& row : ParseRoutes(text, form)) {
            result += row.szIfName + std::string(" ");
            EXPECT_TRUE(row.uiDst == Ip("192.168.50.0") && row.uiMask == Ip("255.255.255.0"));
        }
        return result;
    };
    EXPECT_EQ(names("Iface\tDestination\n" + good + "eth1\n" + good, kRouteLookup), "eth0 eth0 ");
    EXPECT_EQ(names(eight, kRouteDeletion), "eth0 ");
    EXPECT_EQ(names(eight, kRouteLookup), "");
    EXPECT_EQ(names(std::string(225, ' ') + good, kRouteDeletion), ""); // cut in two
    EXPECT_EQ(names(std::string(80, 'n') + good, kRouteList), std::string(63, 'n') + " ");
    EXPECT_EQ(names({"\0\n\n \neth0 FFFFFFFFFFFFFFFFFF 0 1 0 0 0 0\n", 38}, kRouteList), "");
}

TEST(NetText, NameServerLines) {
    const auto servers = [](const std::string& text) {
        DnsServerText slots[2];
        const int count = ParseNameServers(text, slots, 2);
        return std::vector<std::string>(slots, slots + count);
    };
    using List = std::vector<std::string>;
    EXPECT_EQ(servers("#nameserver 1\n nameserver 2\nnameserver  3 # x"), List{"3"});
    EXPECT_EQ(servers("nameserver a\nnameserver b\nnameserver c\n"), (List{"a\n", "b\n"}));
    EXPECT_EQ(servers("nameserver\nnameserver\t4\n" + std::string(199, '#')), List{});
    EXPECT_EQ(servers("nameserver " + std::string(50, '9')), List{std::string(31, '9')});
    EXPECT_EQ(servers(std::string(199, '#') + "nameserver x"), List{"x"}); // cut in two
}

TEST_F(Net, ResolverFile) {
    const std::string text(300, '1');
    DnsServerText slots[2];
    int count = 2;
    EXPECT_EQ(Told([] { return AddDnsServer("8.8.8.8", false); }),
              "0 open file successful!dns_str = 8.8.8.8\ntmpstr1 = nameserver 8.8.8.8\n");
    EXPECT_EQ(AddDnsServer(text.c_str(), true), 0);
    Shell("[ $(wc -c </etc/resolv.conf) = $((19 + 256)) ]");
    EXPECT_EQ(GetDnsServers(slots, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_STREQ(slots[0], "8.8.8.8\n");
    Shell("while umount /etc/resolv.conf 2>/dev/null; do :; done");
    ReplaceFolder("/etc");
    Shell("ln -sf /nowhere/file /etc/resolv.conf");
    EXPECT_EQ(Told([] { return AddDnsServer("8.8.8.8", false); }), "-1 open file Failed!\n");
    EXPECT_EQ(Told([&] { return GetDnsServers(slots, &count); }),
              "-1 Failed opening /etc/resolv.conf file \n");
    EXPECT_EQ(count, 0);
}

// In a child: the cache is fresh there, and the lock that stays held harms nobody.
TEST_F(Net, ServerAddress) {
    const Captured child = CaptureInChild([] {
        const auto resolve = [](const char* text) {
            char dotted[20] = "";
            uint32_t addr = 0;
            const int result = ResolveServerAddress(text, dotted, &addr);
            return std::to_string(result) + " " + dotted + " " + inet_ntoa({addr});
        };
        EXPECT_EQ(resolve("nowhere.test"), "-1 192.168.0.10 0.0.0.0");
        EXPECT_EQ(resolve("server.test"), "0 192.0.2.7 192.0.2.7");
        EXPECT_EQ(resolve("nowhere.test"), "-1 192.0.2.7 192.0.2.7");
        EXPECT_EQ(IsIfRunning("eth0"), 1);
        Shell("ip link set eth0 down");
        EXPECT_EQ(IsIfRunning("eth0"), 0);
        EXPECT_EQ(resolve("server.test"), "-1 192.0.2.7 192.0.2.7"); // the lock is taken
        EXPECT_EQ(resolve("10.1.2.3"), "0 10.1.2.3 10.1.2.3");
        EXPECT_EQ(resolve("1234567890.1234567"), "-1 1234567890.1234 0.0.0.0");
        EXPECT_EQ(resolve(""), "-1  0.0.0.0");
        EXPECT_EQ(ResolveServerAddress("10.1.2.3", nullptr, nullptr), 0);
        return 0;
    });
    const std::string answer = "server ip = 192.0.2.7\n";
    const std::string failed = "gethostbyname: Host name lookup failure\ndomain = nowhere.test\n"
                               "clear dns server!\n";
    EXPECT_EQ(child.status, 0);
    EXPECT_EQ(child.out, answer);
    EXPECT_EQ(child.err, failed + failed + answer);
}

TEST_F(Net, NamesAreResolvedByTwoThreadsAtOnce) {
    const auto resolve = [] {
        char dotted[20];
        for (int i = 0; i < 50; ++i)
            ResolveServerAddress("server.test", dotted, nullptr);
        EXPECT_TRUE(!strcmp(dotted, "192.0.2.7") || !strcmp(dotted, "192.168.0.10")) << dotted;
    };
    std::thread other(resolve);
    resolve();
    other.join();
}

TEST(NetTcp, KeepAliveAndState) {
    const CDescriptor listener(socket(AF_INET, SOCK_STREAM, 0));
    const CDescriptor client(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr addr;
    socklen_t size = sizeof(addr);
    ASSERT_EQ(listen(listener.Get(), 1) + getsockname(listener.Get(), &addr, &size), 0);
    EXPECT_EQ(IsTcpEstablished(client.Get()), 0);
    ASSERT_EQ(connect(client.Get(), &addr, size), 0);
    EXPECT_EQ(IsTcpEstablished(client.Get()), 1);
    EXPECT_EQ(IsTcpEstablished(-1), 0);

    const auto option = [&client](int level, int name) {
        int value = -1;
        socklen_t length = sizeof(value);
        getsockopt(client.Get(), level, name, &value, &length);
        return value;
    };
    EXPECT_EQ(SetTcpKeepAlive(client.Get(), 2), 0);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPINTVL), 1);
    EXPECT_EQ(SetTcpKeepAlive(client.Get(), 30), 0);
    EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 1);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPIDLE), 30);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPINTVL), 10);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPCNT), 3);
    EXPECT_EQ(Told([&] { return SetTcpKeepAlive(client.Get(), -5); }),
              "-1 setsockopt TCP_KEEPIDLE: Invalid argument\n");
}

} // namespace
