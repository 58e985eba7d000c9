// SPDX-License-Identifier: GPL-2.0-only
#include "tests/unit/util/Net.h"

using NetRouteTable = InSandbox;

TEST_F(NetRouteTable, LeadsToAnInterface) {
    char name[12] = "";
    EXPECT_EQ(GetRouteIfName("203.0.113.1", name), -1);
    Shell("ip link add wlan0 type veth peer name wlan1 && ip link set wlan1 up && "
          "ip addr add 10.0.0.2/24 dev wlan0 && ip link set wlan0 up && "
          "ip route add default via 192.168.50.1 && "
          "ip route append default via 10.0.0.1 dev wlan0");
    EXPECT_EQ(Told(PrintRouteTable), "0 Destination\tGenmask\t\tGateway\t\tUse Iface\n"
                                     "0.0.0.0\t0.0.0.0\t192.168.50.1\teth0\n"
                                     "0.0.0.0\t0.0.0.0\t10.0.0.1\twlan0\n"
                                     "10.0.0.0\t255.255.255.0\t0.0.0.0\twlan0\n"
                                     "192.168.50.0\t255.255.255.0\t0.0.0.0\teth0\n");
    EXPECT_EQ(GetRouteIfName("10.0.0.9", name), 0);
    EXPECT_STREQ(name, "eth0"); // by the default route before
    EXPECT_EQ(GetRouteIfName("x", name), -1);
    const auto through = [] {
        EXPECT_EQ(GetDstAddrRouteIfAddr(Ip("192.168.50.9")), Ip("192.168.50.2"));
    };
    EXPECT_NE(Capture(through).out.find("LINE:1134, strIfName:eth0.\n"), std::string::npos);
    EXPECT_STREQ(GetDefaultRouteIfAddrText(), "10.0.0.2");
    Shell("ip addr flush dev eth0 && ip addr flush dev wlan0");
    EXPECT_EQ(Capture([] { EXPECT_EQ(GetDstAddrRouteIfAddr(1), INADDR_NONE); }).err,
              "can not get route table\n");
}
