// SPDX-License-Identifier: GPL-2.0-only
#include <arpa/inet.h>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>

#include "CBB/Util/Owner.h"
#include "CBB/WebCtrl/Link/UdpCtrlSocket.h"
#include "CBB/WebCtrl/WebCtrl.h"
#include "tests/support/Capture.h"
#include "tests/support/Recorder.h"
#include "tests/support/Sandbox.h"

namespace {

std::string CaptureStdout(const std::function<void()>& body) {
    return Capture(body).out;
}

// A socket bound to this port, which nobody else can then bind.
class Taken {
public:
    Taken(int type, uint16_t port) : m_sock(socket(AF_INET, type, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        EXPECT_EQ(bind(m_sock.Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        EXPECT_TRUE(type == SOCK_DGRAM || listen(m_sock.Get(), 1) == 0);
    }

private:
    CDescriptor m_sock;
};

class Controller : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(EnterSandbox(&error)) << error;
    }
};
using ControlSocket = Controller;

// Start, a second Start, the restored address, and Stop once the server has ended by itself.
TEST_F(Controller, StartsAgainAfterTheServerEnded) {
    const Taken taken(SOCK_STREAM, 80);
    CWebCtrl controller;
    const auto start = [&] {
        return CaptureStdout([&] { EXPECT_EQ(controller.Start("/nowhere/web_root"), 0); });
    };
    CaptureStdout([&] { controller.Init("127.0.0.1", 6000); });
    controller.SetWebPort(80);
    for (int round = 0; round < 2; ++round) {
        const std::string first = start();
        EXPECT_EQ(first.find("already started"), std::string::npos);
        EXPECT_EQ(controller.Stop(), 0);
    }
    controller.SetCtrlAddr("192.0.2.7", 6000);
    EXPECT_EQ(controller.Restart(), 0);
    EXPECT_STREQ(controller.DestinationIp(), "127.0.0.1");
    EXPECT_EQ(controller.Stop(), 0);
}

#ifndef WEBCTRL_SANITIZED // a sanitizer needs the memory itself
TEST_F(Controller, CanStartAfterAThreadCouldNot) {
    CWebCtrl controller;
    const Captured captured = CaptureInChild([&] {
        const rlimit none{1, 1};
        setrlimit(RLIMIT_AS, &none);
        return controller.Start("/nowhere") == -1 && controller.Start("/nowhere") == -1 ? 0 : 1;
    });
    EXPECT_EQ(captured.status, 0) << captured.out;
    EXPECT_EQ(captured.out.find("already started"), std::string::npos);
}
#endif

TEST_F(ControlSocket, TakesTheFirstDatagramThatComesAfterTheSend) {
    Recorder recorder;
    CUdpCtrlSocket sock("127.1", 6000, 1, "eth0"); // an older form, as inet_addr(3) takes it
    char out[1025] = "";
    int outLen = 0;
    const std::string printed = CaptureStdout([&] {
        for (const char* stale : {"stale", "", "older"})
            recorder.Reply(stale);
        EXPECT_EQ(sock.SendDataToHost("question", 8), 0);
        EXPECT_EQ(recorder.Receive(), "question");
        recorder.Reply("answer");
        EXPECT_EQ(sock.RecvDataFromHost(out, &outLen), 0);
    });
    EXPECT_STREQ(out, "answer");
    EXPECT_EQ(outLen, 6);
    EXPECT_EQ(printed,
              "CUdpCtrlSocket::SendData2Wifi, m_bMaskBC:1, dest[0x100007f], send data[len:8], "
              "msg:question, ok.\n"
              "CUdpCtrlSocket::RecvDataFromHost,  get data from[127.1  VS 127.0.0.1], "
              "port[6000 VS 6000], msg[answer], len[6].\n");
    const std::string large(256, 'x');
    EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(sock.SendDataToHost(large.c_str(), 256), 0); }), "");
}

TEST_F(ControlSocket, FailsAtOnceWhenItCouldNotBeOpened) {
    CUdpCtrlSocket sock("255.255.255.255", 6000, 1, "lo");
    EXPECT_EQ(CaptureStdout([&] {
                  EXPECT_EQ(sock.OpenCtrlSocket(), 0);
              }).find("CUdpCtrlSocket::OpenCtrlSocket already created socket:"),
              0u);
    Shell("ip link del eth0");
    EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(sock.SendDataToHost("x", 1), -1); }),
              "CUdpCtrlSocket::SendDataToHost, get IfBrdAddr failed.\n");
    sock.CloseCtrlSocket();

    const Taken taken(SOCK_DGRAM, 4999);
    CUdpCtrlSocket unbound("127.0.0.1", 6000, 1, "eth0");
    EXPECT_NE(CaptureStdout([&] { EXPECT_EQ(unbound.OpenCtrlSocket(), -1); }).find("Bind Failed"),
              std::string::npos); // not "already created"

    CUdpCtrlSocket closed("127.0.0.1", 6000, 1, "eth0");
    closed.CloseCtrlSocket();
    const std::string printed = CaptureStdout([&] {
        EXPECT_EQ(closed.SendDataToHost("text", 4), -1);
        char out[1025];
        int outLen = 0;
        EXPECT_EQ(closed.RecvDataFromHost(out, &outLen), -1);
    });
    EXPECT_EQ(printed, "CUdpCtrlSocket::SendData2Wifi, send data to [0x100007f:6000][len:4], "
                       "msg:text, failed, err:Bad file descriptor.\n"
                       "CUdpCtrlSocket::RecvDataFromHost , get net ctrl select failed!\n");
}

} // namespace
