// SPDX-License-Identifier: GPL-2.0-only
#include <sys/mount.h>

#include "CBB/Util/NetShared.h"
#include "tests/unit/util/Net.h"

using NetRoute = InSandbox;

static std::string DefaultRoutes(int capacity) {
    DefaultGateway entries[3];
    EXPECT_EQ(GetAllDefaultGateway(&capacity, entries), 0);
    std::string text;
    for (int i = 0; i < capacity; ++i)
        text += std::string(entries[i].szIfName) + "=" + inet_ntoa({entries[i].uiGateway}) + " ";
    return text;
}

TEST_F(NetRoute, DefaultRoutesComeAndGo) {
    Shell("ip link add wlan0 type veth peer name wlan1 && ip link set wlan1 up && "
          "ip addr add 10.0.0.2/24 dev wlan0 && ip link set wlan0 up && "
          "ip route add 10.9.0.0/16 via 10.0.0.1");
    ReplaceFile("/etc/resolv.conf", "# none\n");
    const std::string set = "SetRoute, [0x132a8c0] - [192.168.50.1], Action=";
    const std::string ok = "SetRoute ioctl ok, SIOC[ADD|DEL]RT, iRequest=0x890";
    EXPECT_EQ(SetRoute("eth7", Ip("192.168.50.1"), 1), 0); // refused, which only the console tells
    EXPECT_EQ(Told([] { return SetRoute("eth0", Ip("192.168.50.1"), 1); }),
              "0 " + set + "1\n" + ok + "b. \n");
    Shell("ip route append default via 10.0.0.1 dev wlan0");
    EXPECT_EQ(DefaultRoutes(1), "eth0=192.168.50.1 ");
    EXPECT_EQ(DefaultRoutes(3), "eth0=192.168.50.1 wlan0=10.0.0.1 ");
    EXPECT_EQ(Found(GetIfGateway, "wlan0"), "0 10.0.0.1");
    EXPECT_EQ(Found(GetIfGateway, "lo"), "0 0.0.0.0");
    EXPECT_EQ(Found(GetIfGateway, nullptr), "-1 0.0.0.7");
    EXPECT_EQ(Found(GetIfNetRoute, "wlan0"), "0 10.0.0.0");

    const std::string row = ": ifName=eth0, flgs:3, dest:0, mask:0, gatew:0x132a8c0.\n";
    const std::string deleted = "0 DelRoute, ifName=eth0.\nDelRoute, Get" + row + "DelRoute, Del" +
                                row + set + "2\n" + ok + "c. \nDelRoute, Get: ifName=wlan0,";
    EXPECT_EQ(Told([] { return DelRoute("eth0"); }).substr(0, deleted.size()), deleted);
    EXPECT_EQ(DefaultRoutes(3), "wlan0=10.0.0.1 ");
    EXPECT_EQ(DelRoute(nullptr) + SetDefaultGateway(nullptr, 1), -3);
    EXPECT_EQ(SetDefaultGateway("eth0", Ip("192.168.50.1")), 0);
    EXPECT_EQ(DefaultRoutes(3), "eth0=192.168.50.1 ");
    Shell("printf 'nameserver 8.8.8.8\\nnameserver 8.8.4.4\\n' | cmp - /etc/resolv.conf");
}

TEST_F(NetRoute, TheTableCannotBeRead) {
    const auto hide = [] { mount("none", "/proc/self/net", "tmpfs", 0, nullptr); };
    hide();
    EXPECT_EQ(Found(GetIfGateway, "eth0"), "-1 0.0.0.7");
    EXPECT_EQ(Told([] { return GetAllDefaultGateway(nullptr, nullptr); }),
              "-1 GetAllDefaultGateway, open file[/proc/net/route] faild.");
    EXPECT_EQ(Told([] { return DelRoute("eth0"); }),
              "-1 DelRoute, ifName=eth0.\n===>>File:CBB/Util/NetTool-Line:950 fopen failed No "
              "such file or directory\n");
    EXPECT_EXIT((hide(), ReadRouteTable()), testing::ExitedWithCode(1), "can't open file!");
}

TEST(RouteEntry, IsChecked) {
    const auto build = [](const char* dst, const char* mask, const char* gateway, int host = 0) {
        return Told([=, route = rtentry()]() mutable {
            const auto flags = static_cast<uint16_t>(RTF_UP | host);
            const bool built = BuildRoute(dst, Ip(mask), gateway, flags, &route);
            return built ? route.rt_flags + static_cast<uint8_t>(route.rt_genmask.sa_data[3]) : 0;
        });
    };
    const std::string bad = "0 SetRoute failed, resolving ", set = "0 SetRoute, ";
    EXPECT_EQ(build("10.1.0.0", "255.255.0.0", "10.0.0.1"), "258 "); // mask byte and flags
    EXPECT_EQ(build("x", "0.0.0.0", "10.0.0.1"), bad + "default");
    EXPECT_EQ(build("default", "0.0.0.0", "x"), bad + "x\n");
    EXPECT_EQ(build("default", "0.0.0.0", "default"), "0 error");
    EXPECT_EQ(build("10.1.0.0", "255.255.255.254", "10.0.0.1", RTF_HOST),
              set + "netmask fffffffe and host route conflict\n");
    EXPECT_EQ(build("10.1.0.0", "255.0.255.0", "10.0.0.1"), set + "bogus netmask ff00ff00");
    EXPECT_EQ(build("10.1.0.1", "255.255.0.0", "10.0.0.1"),
              set + "netmask and route address conflict");
}
