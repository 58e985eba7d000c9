// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/NetText.h"

#include "tests/unit/util/Net.h"

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
    for (const auto& [taken, form] :
         {std::pair{255, kRouteDeletion}, {4095, kRouteLookup}, {4095, kRouteList}})
        EXPECT_EQ(names(Repeat(taken, "n") + good, form), "eth0 "); // begins a new line
    EXPECT_EQ(names(std::string(80, 'n') + eight, kRouteList), std::string(63, 'n') + " ");
    EXPECT_EQ(names({"\0\n\n \neth0 FFFFFFFFFFFFFFFFFF 0 1 0 0 0 0\n", 38}, kRouteList), "");
}

TEST(NetText, NameServerLines) {
    using List = std::vector<std::string>;
    const auto servers = [](const std::string& text) {
        DnsServerText slots[2];
        return List(slots, slots + ParseNameServers(text, slots, 2));
    };
    EXPECT_EQ(servers("#nameserver 1\n nameserver 2\nnameserver  3 # x"), List{"3"});
    EXPECT_EQ(servers("nameserver a\nnameserver b\nnameserver c\n"), (List{"a\n", "b\n"}));
    EXPECT_EQ(servers("nameserver\nnameserver\t4\n" + std::string(199, '#')), List{});
    EXPECT_EQ(servers("nameserver " + std::string(50, '9')), List{std::string(31, '9')});
    EXPECT_EQ(servers(std::string(199, '#') + "nameserver x"), List{"x"}); // cut in two
}
