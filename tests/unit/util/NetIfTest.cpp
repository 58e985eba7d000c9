// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Clock.h"
#include "tests/unit/util/Net.h"

using NetIf = InSandbox;

TEST_F(NetIf, IsReadAndChanged) {
    const unsigned char mac[6] = {2, 0, 0x5e, 0x10, 0xab, 0xfe}, multicast[6] = {1};
    NetIfInfo info;
    EXPECT_EQ(Found(GetIfAddr, "eth0"), "0 192.168.50.2");
    EXPECT_EQ(Found(GetIfAddr, "eth7"), "-1 0.0.0.7");
    EXPECT_EQ(Found(GetIfNetmask, nullptr), "-2 0.0.0.7");
    for (const char* none : {"eth7", static_cast<const char*>(nullptr)})
        EXPECT_EQ(GetIfHwAddr(none, info.ucMac), -1);
    EXPECT_EQ(
        std::tuple(SetIfAddr("eth7", 1), SetMacAddress(nullptr, mac), SetIfNetmask(nullptr, 1)),
        std::tuple(-1, -1, -2));
    EXPECT_EQ(Told([&] { return SetMacAddress("eth7", mac); }),
              "-1 SetMacAddress ioctl SIOCGIFFLAGS failed(No such device)");
    EXPECT_EQ(Told([&] { return SetMacAddress("eth0", multicast); }),
              "-1 SetMacAddress call ioctl failed(Cannot assign requested address)");
    static const rlimit none{};
    const std::tuple<int (*)(), const char*, const char*> prevented[] = {
        {[] { return setrlimit(RLIMIT_NOFILE, &none); }, "socket failed(Too many open files)",
         ", set route open socket failed=-2"},
        {DropRights, "ioctl SIOCSIFFLAGS failed(Operation not permitted)",
         " ioctl failed, SIOC[ADD|DEL]RT, iRequest=35083, err:Operation not permitted. \n=-1"},
    };
    for (const auto& [prevent, address, route] : prevented) {
        const Captured child = CaptureInChild([&mac, call = prevent] {
            call();
            return printf("=%d", SetMacAddress("eth0", mac) + SetRoute("eth0", 1, 1));
        });
        EXPECT_EQ(child.out, std::string("SetMacAddress ") + address +
                                 "SetRoute, [0x1] - [1.0.0.0], Action=1\nSetRoute" + route);
    }
    const uint32_t start = ClockMs();
    EXPECT_EQ(SetMacAddress("eth0", mac), 0);
    EXPECT_GE(ClockMs() - start, 999U) << "a driver had no time to settle";
    Shell("ip link show eth0 | grep -q MULTICAST");
    EXPECT_EQ(SetIfAddr("eth0", Ip("172.16.3.4")), 0);
    EXPECT_EQ(SetIfNetmask("eth0", Ip("255.255.255.128")), 0);
    Shell("ip link show eth0 | grep -q '<.*[<,]UP[,>]' && ip route add default via 172.16.3.1");
    EXPECT_EQ(GetIfInfo("eth0", &info), 0);
    EXPECT_EQ(std::tuple(info.uiAddr, info.uiNetmask, info.uiGateway),
              std::tuple(Ip("172.16.3.4"), Ip("255.255.255.128"), Ip("172.16.3.1")));
    EXPECT_EQ(memcmp(info.ucMac, mac, 6), 0);
    EXPECT_EQ(GetIfInfo("eth7", &info), 0);
    EXPECT_EQ(info.uiAddr, 0U) << "what was there before is gone";
}
