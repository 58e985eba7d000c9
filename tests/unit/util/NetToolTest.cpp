// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/NetTool.h"

#include <algorithm>
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <pthread.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "CBB/Util/NetShared.h"
#include "CBB/Util/Owner.h"
#include "tests/support/Capture.h"
#include "tests/support/Sandbox.h"

namespace {

uint32_t Ip(const char* dotted) {
    return inet_addr(dotted);
}

// eth0 as the sandbox makes it; wlan0 = 10.0.0.2/24 with a cable of its own.
class Net : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(EnterSandbox(&error)) << error;
        ReplaceFile("/etc/resolv.conf", "# none\n");
        ReplaceFile("/etc/hosts", "192.0.2.7 server.test\n");
    }
    static void AddWlan0() {
        Shell("ip link add wlan0 type veth peer name wlan1 && ip link set wlan1 up && "
              "ip addr add 10.0.0.2/24 dev wlan0 && ip link set wlan0 up");
    }
    static void HideRouteTable() {
        ASSERT_EQ(mount("none", "/proc/self/net", "tmpfs", 0, nullptr), 0);
    }
};

TEST_F(Net, InterfaceIsReadAndChanged) {
    uint32_t addr = 0, mask = 0;
    EXPECT_EQ(GetIfAddr("eth0", &addr), 0);
    EXPECT_EQ(addr, Ip("192.168.50.2"));
    EXPECT_EQ(SetIfAddr("eth0", Ip("172.16.3.4")), 0);
    EXPECT_EQ(SetIfNetmask("eth0", Ip("255.255.255.128")), 0);
    EXPECT_EQ(SetRoute("eth0", Ip("172.16.3.1"), 1), 0);
    NetIfInfo info;
    EXPECT_EQ(GetIfInfo("eth0", &info), 0);
    EXPECT_EQ(info.uiAddr, Ip("172.16.3.4"));
    EXPECT_EQ(info.uiNetmask, Ip("255.255.255.128"));
    EXPECT_EQ(info.uiGateway, Ip("172.16.3.1"));

    const unsigned char mac[6] = {2, 0, 0x5e, 0x10, 0xab, 0xfe};
    EXPECT_EQ(SetMacAddress("eth0", mac), 0);
    EXPECT_EQ(GetIfInfo("eth0", &info), 0);
    EXPECT_TRUE(std::equal(mac, mac + 6, info.ucMac));
    Shell("ip link show eth0 | grep -q '<.*[<,]UP[,>]'");

    addr = mask = 77;
    unsigned char hw[6] = {77};
    EXPECT_EQ(GetIfAddr("eth7", &addr), -1);
    EXPECT_EQ(GetIfNetmask("eth7", &mask), -1);
    EXPECT_EQ(GetIfHwAddr("eth7", hw), -1);
    EXPECT_EQ(addr + mask + hw[0], 3 * 77u);
    EXPECT_EQ(SetIfAddr("eth7", addr), -1);
    EXPECT_EQ(GetIfAddr(nullptr, &addr), -2);
    EXPECT_EQ(SetIfAddr(nullptr, 1), -2);
    EXPECT_EQ(GetIfNetmask(nullptr, &mask), -2);
    EXPECT_EQ(SetIfNetmask(nullptr, 1), -2);
    EXPECT_EQ(GetIfHwAddr(nullptr, hw), -1);
    EXPECT_EQ(Capture([&] { EXPECT_EQ(SetMacAddress("eth7", mac), -1); }).out,
              "SetMacAddress ioctl SIOCGIFFLAGS failed(No such device)");
    const unsigned char multicast[6] = {1};
    EXPECT_EQ(Capture([&] { EXPECT_EQ(SetMacAddress("eth0", multicast), -1); }).out,
              "SetMacAddress call ioctl failed(Cannot assign requested address)");
}

TEST_F(Net, TwoDefaultRoutes) {
    AddWlan0();
    EXPECT_EQ(Capture([] { SetRoute("eth0", Ip("192.168.50.1"), 1); }).out,
              "SetRoute, [0x132a8c0] - [192.168.50.1], Action=1\n"
              "SetRoute ioctl ok, SIOC[ADD|DEL]RT, iRequest=0x890b. \n");
    Shell("ip route append default via 10.0.0.1 dev wlan0");

    DefaultGateway entries[3];
    int count = 1;
    EXPECT_EQ(GetAllDefaultGateway(&count, entries), 0);
    EXPECT_EQ(count, 1);
    EXPECT_STREQ(entries[0].szIfName, "eth0");
    count = 3;
    EXPECT_EQ(GetAllDefaultGateway(&count, entries), 0);
    ASSERT_EQ(count, 2);
    EXPECT_STREQ(entries[1].szIfName, "wlan0");
    EXPECT_EQ(entries[1].uiGateway, Ip("10.0.0.1"));
    EXPECT_EQ(entries[1].uiMask, 0u);

    const struct {
        const char* name;
        const char* gateway;
        const char* network;
        int result;
    } interfaces[] = {{"eth0", "192.168.50.1", "192.168.50.0", 0},
                      {"wlan0", "10.0.0.1", "10.0.0.0", 0},
                      {"lo", "0.0.0.0", "0.0.0.0", 0},
                      {nullptr, "7.7.7.7", "7.7.7.7", -1}};
    for (const auto& row : interfaces) {
        uint32_t gateway = Ip("7.7.7.7"), network = gateway;
        EXPECT_EQ(GetIfGateway(row.name, &gateway), row.result);
        EXPECT_EQ(GetIfNetRoute(row.name, &network), row.result);
        EXPECT_EQ(gateway, Ip(row.gateway));
        EXPECT_EQ(network, Ip(row.network));
    }

    // The last default route decides, a network's own route always wins.
    EXPECT_EQ(GetDstAddrRouteIfAddr(Ip("192.168.50.9")), Ip("192.168.50.2"));
    EXPECT_EQ(GetDstAddrRouteIfAddr(Ip("8.8.8.8")), Ip("10.0.0.2"));
    EXPECT_STREQ(GetDefaultRouteIfAddrText(), "10.0.0.2");
    char name[12] = "";
    EXPECT_EQ(GetRouteIfName("10.0.0.9", name), 0);
    EXPECT_STREQ(name, "eth0"); // by its default route, which stands first
    EXPECT_EQ(Capture([] { PrintRouteTable(); }).out,
              "Destination\tGenmask\t\tGateway\t\tUse Iface\n"
              "0.0.0.0\t0.0.0.0\t192.168.50.1\teth0\n"
              "0.0.0.0\t0.0.0.0\t10.0.0.1\twlan0\n"
              "10.0.0.0\t255.255.255.0\t0.0.0.0\twlan0\n"
              "192.168.50.0\t255.255.255.0\t0.0.0.0\teth0\n");

    const std::string out = Capture([] { EXPECT_EQ(DelRoute("eth0"), 0); }).out;
    EXPECT_EQ(out.rfind("DelRoute, ifName=eth0.\n"
                        "DelRoute, Get: ifName=eth0, flgs:3, dest:0, mask:0, gatew:0x132a8c0.\n"
                        "DelRoute, Del: ifName=eth0, flgs:3, dest:0, mask:0, gatew:0x132a8c0.\n"
                        "SetRoute, [0x132a8c0] - [192.168.50.1], Action=2\n"
                        "SetRoute ioctl ok, SIOC[ADD|DEL]RT, iRequest=0x890c. \n"
                        "DelRoute, Get: ifName=wlan0,",
                        0),
              0u)
        << out;
    count = 3;
    GetAllDefaultGateway(&count, entries);
    ASSERT_EQ(count, 1);
    EXPECT_STREQ(entries[0].szIfName, "wlan0");

    EXPECT_EQ(SetDefaultGateway("eth0", Ip("192.168.50.1")), 0);
    count = 3;
    GetAllDefaultGateway(&count, entries);
    ASSERT_EQ(count, 1);
    EXPECT_STREQ(entries[0].szIfName, "eth0");
    EXPECT_EQ(SetDefaultGateway(nullptr, 0), -2);
    Shell("printf 'nameserver 8.8.8.8\\nnameserver 8.8.4.4\\n' | cmp - /etc/resolv.conf");

    EXPECT_EQ(Capture([] { EXPECT_EQ(SetRoute("eth7", Ip("10.0.0.1"), 1), 0); }).out,
              "SetRoute, [0x100000a] - [10.0.0.1], Action=1\n"
              "SetRoute ioctl failed, SIOC[ADD|DEL]RT, iRequest=35083, err:No such device. \n");
    Shell("ip addr flush dev eth0 && ip addr flush dev wlan0");
    EXPECT_EQ(Capture([] { EXPECT_EQ(GetDstAddrRouteIfAddr(1), INADDR_NONE); }).err,
              "can not get route table\n");
    EXPECT_EQ(GetRouteIfName("10.0.0.9", name), -1);
}

TEST_F(Net, UnreadableRouteTable) {
    HideRouteTable();
    int count = 1;
    DefaultGateway entry;
    uint32_t addr;
    const std::string failed = " fopen failed No such file or directory\n";
    EXPECT_EQ(GetIfGateway("eth0", &addr), -1);
    EXPECT_EQ(Capture([&] { EXPECT_EQ(GetAllDefaultGateway(&count, &entry), -1); }).out,
              "GetAllDefaultGateway, open file[/proc/net/route] faild.");
    EXPECT_EQ(Capture([] { EXPECT_EQ(DelDefaultRoutes(), -1); }).out,
              "===>>File:CBB/Util/NetTool-Line:904" + failed);
    EXPECT_EQ(Capture([] { EXPECT_EQ(DelRoute("eth0"), -1); }).out,
              "DelRoute, ifName=eth0.\n===>>File:CBB/Util/NetTool-Line:950" + failed);
    const Captured child = CaptureInChild([] {
        HideRouteTable();
        ReadRouteTable();
        return 0;
    });
    EXPECT_EQ(WEXITSTATUS(child.status), 1);
    EXPECT_EQ(child.err, "can't open file!\n: No such file or directory\n");
    umount("/proc/self/net");
}

TEST(NetText, RouteEntryIsChecked) {
    const struct {
        const char* dst;
        const char* mask;
        const char* gateway;
        int flags;
        const char* complaint;
    } rows[] = {
        {"default", "0.0.0.0", "10.0.0.1", RTF_UP, ""},
        {"10.1.0.0", "255.255.0.0", "10.0.0.1", RTF_UP, ""},
        {"nowhere", "0.0.0.0", "10.0.0.1", RTF_UP, "SetRoute failed, resolving default"},
        {"default", "0.0.0.0", "nowhere", RTF_UP, "SetRoute failed, resolving nowhere\n"},
        {"default", "0.0.0.0", "default", RTF_UP, "error"},
        {"10.1.0.1", "255.255.0.0", "10.0.0.1", RTF_UP | RTF_HOST,
         "SetRoute, netmask ffff0000 and host route conflict\n"},
        {"10.1.0.0", "255.0.255.0", "10.0.0.1", RTF_UP, "SetRoute, bogus netmask ff00ff00"},
        {"10.1.0.1", "255.255.0.0", "10.0.0.1", RTF_UP,
         "SetRoute, netmask and route address conflict"},
    };
    for (const auto& row : rows) {
        rtentry route;
        bool built = false;
        const auto build = [&] {
            built = BuildRoute(row.dst, Ip(row.mask), row.gateway,
                               static_cast<unsigned short>(row.flags), &route);
        };
        EXPECT_EQ(Capture(build).out, row.complaint);
        EXPECT_EQ(built, row.complaint[0] == '\0');
    }
}

TEST(NetText, RouteLines) {
    const std::string good = "eth0\t0032A8C0\t00000000\t0001\t0\t0\t-1\t00FFFFFF\t0\t0\t0\n";
    const std::string name(80, 'n');
    const struct {
        std::string text;
        RouteForm form;
        size_t rows;
    } cases[] = {
        {"Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\n" + good, kRouteList, 1},
        {good + good.substr(0, 40) + "\n" + good, kRouteLookup, 2},
        {good.substr(0, good.find("FF\t") + 2), kRouteDeletion, 1}, // eight fields, no line end
        {good.substr(0, good.find("FF\t") + 2), kRouteLookup, 0},
        {std::string(255, ' ') + good, kRouteDeletion, 1}, // the overrun starts a new line
        {std::string(255, ' ') + good, kRouteList, 1},
        {std::string(225, ' ') + good, kRouteDeletion, 0},
        {name + good, kRouteList, 1},
        {std::string("\0\n\n \n", 5), kRouteList, 0},
        {"eth0 FFFFFFFFFFFFFFFFFF 0 1 0 0 0 0\n", kRouteList, 0},
    };
    for (const auto& row : cases) {
        const std::vector<RouteRow> rows = ParseRoutes(row.text, row.form);
        ASSERT_EQ(rows.size(), row.rows) << row.text;
        for (const RouteRow& route : rows) {
            EXPECT_EQ(route.uiDst, Ip("192.168.50.0"));
            EXPECT_EQ(route.uiMask, Ip("255.255.255.0"));
        }
    }
    EXPECT_EQ(ParseRoutes(name + good, kRouteList)[0].szIfName, name.substr(0, 63));
}

TEST(NetText, NameServerLines) {
    const std::string longText(50, '9');
    const struct {
        std::string text;
        int capacity;
        std::vector<std::string> servers;
    } cases[] = {
        {"nameserver 8.8.8.8\n", 4, {"8.8.8.8\n"}},
        {"#nameserver 1.1.1.1\nsearch x\n nameserver 2.2.2.2\nnameserver  3.3.3.3 # x",
         4,
         {"3.3.3.3"}},
        {"nameserver a\nnameserver b\nnameserver c\n", 2, {"a\n", "b\n"}},
        {"nameserver\nnameserver\t4.4.4.4\n", 4, {}},
        {"nameserver " + longText + "\n", 1, {longText.substr(0, 31)}},
        {std::string(199, '#') + "nameserver x\n", 1, {"x\n"}},
        {"nameserver a\n", 0, {}},
    };
    for (const auto& row : cases) {
        DnsServerText slots[4];
        const int count = ParseNameServers(row.text, slots, row.capacity);
        EXPECT_EQ(std::vector<std::string>(slots, slots + count), row.servers) << row.text;
    }
}

TEST_F(Net, ResolverFile) {
    EXPECT_EQ(Capture([] { EXPECT_EQ(AddDnsServer("8.8.8.8", false), 0); }).out,
              "open file successful!dns_str = 8.8.8.8\ntmpstr1 = nameserver 8.8.8.8\n");
    EXPECT_EQ(AddDnsServer(std::string(300, '1').c_str(), true), 0);
    Shell("[ $(wc -c </etc/resolv.conf) = $((19 + 256)) ]");
    DnsServerText slots[2];
    int count = 2;
    EXPECT_EQ(GetDnsServers(slots, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_STREQ(slots[0], "8.8.8.8\n");

    Shell("while umount /etc/resolv.conf 2>/dev/null; do :; done");
    ReplaceFolder("/etc");
    Shell("ln -sf /nowhere/file /etc/resolv.conf");
    EXPECT_EQ(Capture([&] { EXPECT_EQ(GetDnsServers(slots, &count), -1); }).out,
              "Failed opening /etc/resolv.conf file \n");
    EXPECT_EQ(count, 0);
    EXPECT_EQ(Capture([] { EXPECT_EQ(AddDnsServer("8.8.8.8", false), -1); }).out,
              "open file Failed!\n");
}

// In a child: the cache is fresh there, and the lock that stays held harms nobody.
TEST_F(Net, ServerAddress) {
    const Captured child = CaptureInChild([] {
        const auto resolve = [](const char* text, const std::string& answer, const char* addr) {
            char dotted[20] = "";
            uint32_t value = Ip("0.0.0.1");
            const int result = ResolveServerAddress(text, dotted, &value);
            EXPECT_EQ(dotted, answer);
            EXPECT_EQ(value, Ip(addr));
            return result;
        };
        EXPECT_EQ(resolve("nowhere.test", "192.168.0.10", "0.0.0.0"), -1);
        EXPECT_EQ(resolve("server.test", "192.0.2.7", "192.0.2.7"), 0);
        EXPECT_EQ(resolve("nowhere.test", "192.0.2.7", "192.0.2.7"), -1);
        EXPECT_EQ(IsIfRunning("eth7"), 0);
        EXPECT_EQ(IsIfRunning("eth0"), 1);
        Shell("ip link set eth0 down");
        EXPECT_EQ(IsIfRunning("eth0"), 0);
        EXPECT_EQ(resolve("server.test", "192.0.2.7", "192.0.2.7"), -1); // the lock is taken
        EXPECT_EQ(resolve("10.1.2.3", "10.1.2.3", "10.1.2.3"), 0);
        EXPECT_EQ(resolve("1234567890.1234567", "1234567890.1234", "0.0.0.1"), -1);
        EXPECT_EQ(resolve("", "", "0.0.0.1"), -1);
        EXPECT_EQ(resolve(nullptr, "", "0.0.0.1"), -1);
        EXPECT_EQ(ResolveServerAddress("10.1.2.3", nullptr, nullptr), 0);
        EXPECT_EQ(ResolveServerAddress("server.test", nullptr, nullptr), -1);
        return HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(child.status, 0) << child.out;
    EXPECT_EQ(child.out, "server ip = 192.0.2.7\n");
    const std::string failed = "gethostbyname: Host name lookup failure\ndomain = nowhere.test\n"
                               "clear dns server!\n";
    EXPECT_EQ(child.err, failed + failed + "server ip = 192.0.2.7\nserver ip = 192.0.2.7\n");
}

TEST_F(Net, ToolsAreUsedFromSeveralThreads) {
    std::thread threads[3];
    for (std::thread& thread : threads)
        thread = std::thread([] {
            for (int i = 0; i < 50; ++i) {
                char dotted[20];
                uint32_t addr;
                ResolveServerAddress("server.test", dotted, nullptr);
                EXPECT_TRUE(std::string(dotted) == "192.0.2.7" ||
                            std::string(dotted) == "192.168.0.10");
                EXPECT_EQ(GetIfAddr("eth0", &addr), 0);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(Net, KeepAliveAndState) {
    const CDescriptor listener(socket(AF_INET, SOCK_STREAM, 0)),
        client(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in addr = {};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = Ip("192.168.50.2");
    addr.sin_port = htons(7777);
    const auto* generic = reinterpret_cast<const sockaddr*>(&addr);
    ASSERT_EQ(bind(listener.Get(), generic, sizeof(addr)), 0);
    ASSERT_EQ(listen(listener.Get(), 1), 0);
    EXPECT_EQ(IsTcpEstablished(client.Get()), 0);
    ASSERT_EQ(connect(client.Get(), generic, sizeof(addr)), 0);
    EXPECT_EQ(IsTcpEstablished(client.Get()), 1);
    EXPECT_EQ(IsTcpEstablished(listener.Get()), 0);
    EXPECT_EQ(IsTcpEstablished(-1), 0);

    for (const auto& [idle, interval] : {std::pair(2, 1), std::pair(30, 10)}) {
        EXPECT_EQ(SetTcpKeepAlive(client.Get(), idle), 0);
        const std::pair<std::pair<int, int>, int> wanted[] = {
            {{SOL_SOCKET, SO_KEEPALIVE}, 1},
            {{IPPROTO_TCP, TCP_KEEPIDLE}, idle},
            {{IPPROTO_TCP, TCP_KEEPINTVL}, interval},
            {{IPPROTO_TCP, TCP_KEEPCNT}, 3}};
        for (const auto& [option, value] : wanted) {
            int got = -1;
            socklen_t size = sizeof(got);
            EXPECT_EQ(getsockopt(client.Get(), option.first, option.second, &got, &size), 0);
            EXPECT_EQ(got, value);
        }
    }
    EXPECT_EQ(Capture([] { EXPECT_EQ(SetTcpKeepAlive(-1, 30), -1); }).out,
              "setsockopt SO_KEEPALIVE: Bad file descriptor");
    EXPECT_EQ(Capture([&] { EXPECT_EQ(SetTcpKeepAlive(client.Get(), -5), -1); }).out,
              "setsockopt TCP_KEEPIDLE: Invalid argument\n");
}

} // namespace
