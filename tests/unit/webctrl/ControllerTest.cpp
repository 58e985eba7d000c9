// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/WebCtrl.h"

#include <arpa/inet.h>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>

#include "CBB/Util/Owner.h"
#include "CBB/WebCtrl/Link/UdpCtrlSocket.h"
#include "tests/support/Capture.h"
#include "tests/support/Sandbox.h"

namespace {

std::string CaptureStdout(const std::function<void()>& body) {
    return Capture(body).out;
}

TEST(Controller, IsOneObjectThatTakesItsAddressCut) {
    CWebCtrl* controller = CWebCtrl::GetInstance();
    EXPECT_EQ(controller, CWebCtrl::GetInstance());
    EXPECT_EQ(controller->DestinationPort(), 6000);
    const std::string longIp(40, '1');
    EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(controller->Init(longIp.c_str(), 6001), 0); }),
              "CWebCtrl::Init, ip:" + longIp + ", port:6001.\n");
    EXPECT_EQ(controller->DestinationIp(), longIp.substr(0, 31));
    EXPECT_EQ(controller->SetCtrlAddr("192.0.2.7", 6002), 0);
    EXPECT_STREQ(controller->DestinationIp(), "192.0.2.7");
    EXPECT_EQ(controller->DestinationPort(), 6002);
}

// Start, a second Start, the restored address, and Stop once the server has ended by itself.
TEST(Controller, StartsAgainAfterTheServerEnded) {
    std::string error;
    ASSERT_TRUE(EnterSandbox(&error)) << error;
    const CDescriptor taken(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in port80{};
    port80.sin_family = AF_INET;
    port80.sin_port = htons(80);
    ASSERT_EQ(bind(taken.Get(), reinterpret_cast<sockaddr*>(&port80), sizeof(port80)), 0);
    ASSERT_EQ(listen(taken.Get(), 1), 0);

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

TEST(ControlSocket, TakesTheFirstDatagramThatComesAfterTheSend) {
    std::string error;
    ASSERT_TRUE(EnterSandbox(&error)) << error;
    const CDescriptor recorder(socket(AF_INET, SOCK_DGRAM, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(6000);
    ASSERT_EQ(bind(recorder.Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    CUdpCtrlSocket sock("127.1", 6000, 1, "eth0"); // an older form, as inet_addr(3) takes it
    address.sin_port = htons(4999);
    address.sin_addr.s_addr = inet_addr("192.168.50.2");
    const auto reply = [&](const char* text) {
        EXPECT_GT(sendto(recorder.Get(), text, strlen(text), 0,
                         reinterpret_cast<sockaddr*>(&address), sizeof(address)),
                  0);
    };
    char out[1025] = "";
    int outLen = 0;
    const std::string printed = CaptureStdout([&] {
        reply("stale");
        reply("older");
        EXPECT_EQ(sock.SendDataToHost("question", 8), 0);
        reply("answer");
        EXPECT_EQ(sock.RecvDataFromHost(out, &outLen), 0);
    });
    EXPECT_STREQ(out, "answer");
    EXPECT_EQ(outLen, 6);
    sockaddr_in source{};
    socklen_t sourceLen = sizeof(source);
    EXPECT_EQ(recvfrom(recorder.Get(), out, sizeof(out), MSG_DONTWAIT,
                       reinterpret_cast<sockaddr*>(&source), &sourceLen),
              8);
    EXPECT_EQ(memcmp(&source, &address, sizeof(source)), 0); // eth0's, port 4999
    EXPECT_EQ(printed,
              "CUdpCtrlSocket::SendData2Wifi, m_bMaskBC:1, dest[0x100007f], send data[len:8], "
              "msg:question, ok.\n"
              "CUdpCtrlSocket::RecvDataFromHost,  get data from[127.1  VS 192.168.50.2], "
              "port[6000 VS 6000], msg[answer], len[6].\n");
    const std::string large(256, 'x');
    EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(sock.SendDataToHost(large.c_str(), 256), 0); }), "");
}

TEST(ControlSocket, FailsAtOnceWhenItCouldNotBeOpened) {
    std::string error;
    ASSERT_TRUE(EnterSandbox(&error)) << error;
    CUdpCtrlSocket sock("255.255.255.255", 6000, 1, "lo");
    EXPECT_EQ(CaptureStdout([&] {
                  EXPECT_EQ(sock.OpenCtrlSocket(), 0);
              }).find("CUdpCtrlSocket::OpenCtrlSocket already created socket:"),
              0u);
    Shell("ip link del eth0");
    EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(sock.SendDataToHost("x", 1), -1); }),
              "CUdpCtrlSocket::SendDataToHost, get IfBrdAddr failed.\n");
    sock.CloseCtrlSocket();

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
