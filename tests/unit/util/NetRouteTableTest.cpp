// SPDX-License-Identifier: GPL-2.0-only
#include "tests/unit/util/Net.h"

using NetRouteTable = InSandbox;

TEST_F(NetRouteTable, LeadsToAnInterface) {
    char name[12] = "";
    EXPECT_EQ(GetRouteIfName("203.0.113.1", name), -1);
    Shell("ip link add w type veth peer name wlan1 && ip link set wlan1 up && "
          "ip addr add 10.0.0.2/24 dev w && ip link set w up && "
          "ip route add default via 192.168.50.1 && "
          "ip route append default via 10.0.0.1 dev w");
    EXPECT_EQ(Told(PrintRouteTable), "0 Destination\tGenmask\t\tGateway\t\tUse Iface\n"
                                     "0.0.0.0\t0.0.0.0\t192.168.50.1\teth0\n"
                                     "0.0.0.0\t0.0.0.0\t10.0.0.1\tw\n"
                                     "10.0.0.0\t255.255.255.0\t0.0.0.0\tw\n"
                                     "192.168.50.0\t255.255.255.0\t0.0.0.0\teth0\n");
    EXPECT_EQ(GetRouteIfName("10.0.0.9", name), 0);
    EXPECT_STREQ(name, "eth0"); // by the default route before
    EXPECT_EQ(GetRouteIfName("x", name), -1);
    const auto through = [] {
        EXPECT_EQ(GetDstAddrRouteIfAddr(Ip("192.168.50.9")), Ip("192.168.50.2"));
    };
    const std::string line = "-----FUN:GetDstAddrRouteIfAddr, LINE:", eth0 = ", strIfName:eth0.\n";
    const auto row = [&line](const char* mask, const char* dst) {
        return line + "1126, uiDstIp:0x932a8c0, inetmask.s_addr:0x" + mask + ", destion.s_addr:0x" +
               dst + ".\n";
    };
    EXPECT_EQ(Capture(through).out, row("0", "0") + line + "1144" + eth0 + row("0", "0") + line +
                                        "1144, strIfName:w.\n" + row("ffffff", "a") +
                                        row("ffffff", "32a8c0") + line + "1134" + eth0 + line +
                                        "1150" + eth0);
    EXPECT_STREQ(GetDefaultRouteIfAddrText(), "10.0.0.2");
    Shell("ip addr flush dev eth0 && ip addr flush dev w");
    const auto without = [&name] {
        EXPECT_EQ(GetDstAddrRouteIfAddr(1), INADDR_NONE);
        EXPECT_EQ(PrintRouteTable() + GetRouteIfName("10.0.0.9", name), -1);
    };
    EXPECT_EQ(Capture(without).err, Repeat(3, "can not get route table\n"));
}
