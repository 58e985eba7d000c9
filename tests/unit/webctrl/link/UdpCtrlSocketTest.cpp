// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Link/UdpCtrlSocket.h"

#include <poll.h>
#include <utility>

#include "tests/support/Recorder.h"
#include "tests/unit/Unit.h"

static int g_waitedMs = -1;

// Stands in for the C library's: what a datagram is waited for is summed, once that is begun.
extern "C" int poll(pollfd* fds, nfds_t count, int ms) {
    if (g_waitedMs >= 0 && ms > 0)
        return g_waitedMs += ms, 0;
    const timespec limit{ms / 1000, ms % 1000 * 1000000L};
    return ppoll(fds, count, &limit, nullptr);
}

using UdpCtrlSocket = InSandbox;

TEST_F(UdpCtrlSocket, TakesTheFirstDatagramThatComesAfterTheSend) {
    Recorder recorder;
    CUdpCtrlSocket sock("127.1", 6000, 1, "eth0"); // an older form, as inet_addr(3) takes it
    char out[1025] = "";
    int outLen = 0;
    const auto exchange = [&] {
        for (const char* stale : {"stale", "", "older"})
            recorder.Reply(stale);
        EXPECT_EQ(sock.SendDataToHost("question", 8), 0);
        EXPECT_EQ(recorder.Receive(), "question");
        recorder.Reply("answer");
        EXPECT_EQ(sock.RecvDataFromHost(out, &outLen), 0);
    };
    EXPECT_EQ(Capture(exchange).out,
              "CUdpCtrlSocket::SendData2Wifi, m_bMaskBC:1, dest[0x100007f], send data[len:8], "
              "msg:question, ok.\n"
              "CUdpCtrlSocket::RecvDataFromHost,  get data from[127.1  VS 127.0.0.1], "
              "port[6000 VS 6000], msg[answer], len[6].\n");
    EXPECT_EQ(out + std::to_string(outLen), "answer6");
    const std::string large(256, 'x');
    EXPECT_EQ(Told([&] { return sock.SendDataToHost(large.c_str(), 256); }), "0 ");
    recorder.Reply("");
    EXPECT_EQ(sock.RecvDataFromHost(out, &outLen), -1);
    Recorder(6001).Reply("another's");
    EXPECT_EQ(sock.RecvDataFromHost(out, &outLen), -1);
    g_waitedMs = 0;
    EXPECT_EQ(sock.RecvDataFromHost(out, &outLen), -2);
    EXPECT_EQ(std::exchange(g_waitedMs, -1), 5000);
}

TEST_F(UdpCtrlSocket, FailsAtOnceWhenItCouldNotBeOpened) {
    const auto open = [](auto& s) { return Told([&] { return s.OpenCtrlSocket(); }); };
    const auto send = [](auto& s) { return Told([&] { return s.SendDataToHost("text", 4); }); };
    CUdpCtrlSocket sock("255.255.255.255", 6000, 1, "lo");
    sock.CloseCtrlSocket();
    EXPECT_EQ(open(sock), "0 ");
    EXPECT_EQ(open(sock).find("0 CUdpCtrlSocket::OpenCtrlSocket already created socket:"), 0u);
    // Another one takes the same port.
    EXPECT_EQ(CUdpCtrlSocket("127.0.0.1", 6000, 1, "lo").SendDataToHost("text", 4), 0);
    Shell("ip link del eth0");
    EXPECT_EQ(send(sock), "-1 CUdpCtrlSocket::SendDataToHost, get IfBrdAddr failed.\n");
    EXPECT_EQ(sock.CloseCtrlSocket(), 0);

    const Captured none = CaptureInChild([] {
        const rlimit one{1, 1};
        return setrlimit(RLIMIT_NOFILE, &one) + CUdpCtrlSocket("", 0, 1, "lo").OpenCtrlSocket() + 1;
    });
    const std::string failed = "CUdpCtrlSocket::OpenCtrlSocket, Create Ctrl Socket Failed.Error:";
    EXPECT_EQ(none.out, Repeat(2, failed + "Too many open files\n"));
    EXPECT_EQ(none.status, 0);
    const Taken taken(SOCK_DGRAM, 4999);
    CUdpCtrlSocket unbound("127.0.0.1", 6000, 1, "eth0");
    // Not "already created".
    EXPECT_EQ(open(unbound).find("-1 CUdpCtrlSocketSvr::OpenSvrSocket, Server Bind Failed."), 0u);

    CUdpCtrlSocket closed("127.0.0.1", 6000, 1, "eth0");
    closed.CloseCtrlSocket();
    EXPECT_EQ(send(closed),
              "-1 CUdpCtrlSocket::SendData2Wifi, send data to [0x100007f:6000][len:4], "
              "msg:text, failed, err:Bad file descriptor.\n");
    char out[1025];
    int outLen = 0;
    EXPECT_EQ(Told([&] { return closed.RecvDataFromHost(out, &outLen); }),
              "-1 CUdpCtrlSocket::RecvDataFromHost , get net ctrl select failed!\n");
}
