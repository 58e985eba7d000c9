// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/MyPing.h"

#include <poll.h>

#include "tests/unit/Unit.h"

extern std::atomic<int64_t> g_wallClockUs;

// Stands in for the C library's: tells how long a reply is waited for.
extern "C" int ppoll(pollfd* fds, nfds_t count, const timespec* limit, const sigset_t*) {
    printf("wait %ld.%09ld s\n", static_cast<long>(limit->tv_sec), limit->tv_nsec);
    return poll(fds, count, 1000);
}

// PingHost in a process of that id, in a namespace where every id is free: 0 for `result`.
static int PingAs(pid_t pid, const char* host, int result) {
    g_wallClockUs = 1500000; // the second ends before the reply
    const auto ping = [&] { return getpid() != pid || PingHost(host) != result; };
    const auto first = [&] {
        std::ofstream("/proc/sys/kernel/ns_last_pid") << pid - 1 << std::flush;
        return RunInChild(ping) != 0;
    };
    return unshare(CLONE_NEWPID) != 0 || RunInChild(first) != 0;
}

using MyPing = InSandbox;

TEST_F(MyPing, ReportTellsWhetherTheHostAnswers) {
    ReplaceFile("/etc/hosts", "192.168.50.1 peer.test\n");
    ReplaceFile("/etc/resolv.conf", "nameserver 127.0.0.1\n");
    const std::string wait = "wait 0.000500000 s\n";
    const std::string sent = "): 56 bytes data in ICMP packets.\nsend_packet ok\n" + wait;
    const std::string title = "\n--------------------PING statistics-------------------\n";
    const std::string lost = title + "1 packets transmitted, 0 received , %100 lost\n";
    const std::string reply = "64 byte from 192.168.50.1: icmp_seq=1 ttl=64 rtt=250.999 ms\n";
    const std::string answered = sent + "recv_packet ok.\n" + reply + title +
                                 "1 packets transmitted, 1 received , %0 lost\n";
    const std::tuple<pid_t, const char*, int, std::string> rows[] = {
        {300, "192.168.50.1", -1, "PING 192.168.50.1(192.168.50.1" + answered},
        {65535, "peer.test", -1, "PING peer.test(192.168.50.1" + answered},
        {65538, "192.168.50.1", -1,
         "PING 192.168.50.1(192.168.50.1" + sent + "recv_packet ok.\n" + lost},
        {300, "192.168.50.9", -1, "PING 192.168.50.9(192.168.50.9" + sent + lost},
        {300, "10.1.1.1", -1,
         "PING 10.1.1.1(10.1.1.1): 56 bytes data in ICMP packets.\n" + wait + lost +
             "sendto error"},
        {300, "nowhere.test", 0, "gethostbyname error"},
    };
    for (const auto& [pid, host, result, told] : rows) {
        const Captured ping =
            CaptureInChild([p = pid, h = host, r = result] { return PingAs(p, h, r); });
        EXPECT_EQ(ping.status, 0) << host;
        EXPECT_EQ(ping.out + ping.err.substr(0, ping.err.find(':')), told);
    }
    EXPECT_EQ(CaptureInChild([] { return DropRights() + PingHost("127.0.0.1"); }).err,
              "socket error: Operation not permitted\n");
}

TEST(MyPingReply, CountsOnlyTheReplyToItsRequest) {
    const std::string tooShort = "0 ICMP packets's length is less than 8";
    const std::string counted = "1 16 byte from 0.0.0.0: icmp_seq=0 ttl=0 rtt=0.000 ms\n";
    // Of a ping that sent nothing: all that a reply has to repeat is 0.
    const auto parse = [](size_t length, int header, size_t differs = 0) {
        // Of exactly that size, so that a read past the end is found.
        const auto bytes = std::make_unique<unsigned char[]>(length);
        if (length > 0) {
            bytes[differs] = 1;
            bytes[0] = static_cast<unsigned char>(header);
        }
        return Told([&] { return CMyPing().ParseReply(bytes.get(), static_cast<int>(length)); });
    };
    for (const auto& [length, header] :
         {std::pair<size_t, int>{0, 0}, {1, 0x45}, {27, 0x45}, {40, 0x4f}})
        EXPECT_EQ(parse(length, header), tooShort) << length;
    for (const auto& [length, header] : {std::pair<size_t, int>{36, 0x45}, {16, 0x00}})
        EXPECT_EQ(parse(length, header), counted) << length;
    EXPECT_EQ(parse(35, 0x45), "0 ");
    EXPECT_EQ(CMyPing::Checksum("\xff\xff\xff\xff\1", 5), 0xfffe);
    EXPECT_EQ(CMyPing::Checksum("\xff\xff\1\1\1", 4), 0xfefe);
    for (const size_t differs : {12, 15, 20, 25, 27, 28, 35}) // address, type, request, time
        EXPECT_EQ(parse(36, 0x45, differs), "0 ") << differs;
}
