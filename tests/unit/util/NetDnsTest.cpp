// SPDX-License-Identifier: GPL-2.0-only
#include "tests/unit/util/Net.h"

struct NetDns : InSandbox {
    void SetUp() override {
        InSandbox::SetUp();
        ReplaceFile("/etc/resolv.conf", "# none\n");
        ReplaceFile("/etc/hosts", "192.0.2.7 server.test\n");
    }
};

TEST_F(NetDns, ResolverFile) {
    DnsServerText slots[2];
    int count = 2;
    EXPECT_EQ(Told([] { return AddDnsServer("8.8.8.8", false); }),
              "0 open file successful!dns_str = 8.8.8.8\ntmpstr1 = nameserver 8.8.8.8\n");
    EXPECT_EQ(AddDnsServer(std::string(300, '1').c_str(), true), 0);
    Shell("[ $(wc -c </etc/resolv.conf) = $((19 + 256)) ]");
    EXPECT_EQ(GetDnsServers(slots, &count), 0);
    EXPECT_EQ(std::pair(2, std::string("8.8.8.8\n")), std::pair(count, std::string(slots[0])));
    Shell("while umount /etc/resolv.conf 2>/dev/null; do :; done");
    ReplaceFolder("/etc");
    Shell("ln -sf /nowhere/file /etc/resolv.conf");
    EXPECT_EQ(Told([] { return AddDnsServer("8.8.8.8", false); }), "-1 open file Failed!\n");
    EXPECT_EQ(Told([&] { return GetDnsServers(slots, &count); }),
              "-1 Failed opening /etc/resolv.conf file \n");
    EXPECT_EQ(count, 0);
}

// In a child: the cache is fresh there, and the lock that stays held harms nobody.
TEST_F(NetDns, ServerAddress) {
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
        EXPECT_EQ(IsIfRunning("eth0") + IsIfRunning("eth7") + IsIfRunning(nullptr), 0);
        EXPECT_EQ(resolve("server.test"), "-1 192.0.2.7 192.0.2.7"); // the lock is taken
        EXPECT_EQ(resolve("10.1.2.3"), "0 10.1.2.3 10.1.2.3");
        EXPECT_EQ(resolve("1234567890.1234567"), "-1 1234567890.1234 0.0.0.0");
        EXPECT_EQ(IsDomainName("") + IsDomainName("1.2") + IsDomainName("a.1"), 0);
        EXPECT_EQ(resolve("") + resolve(nullptr), "-1  0.0.0.0-1  0.0.0.0");
        EXPECT_EQ(ResolveServerAddress("10.1.2.3", nullptr, nullptr), 0);
        return 0; // what fails here is printed
    });
    const std::string answer = "server ip = 192.0.2.7\n";
    const std::string failed = "gethostbyname: Host name lookup failure\ndomain = nowhere.test\n"
                               "clear dns server!\n";
    EXPECT_EQ(std::tuple(child.status, child.out, child.err),
              std::tuple(0, answer, failed + failed + answer));
}

TEST_F(NetDns, TwoThreadsAtOnce) {
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
