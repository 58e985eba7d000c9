// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/WebCtrl.h"

#include "tests/unit/webctrl/Taken.h"

using WebCtrl = InSandbox;

// Start, a second Start, the restored address, and Stop once the server has ended by itself.
TEST_F(WebCtrl, StartsAgainAfterTheServerEnded) {
    const Taken taken(SOCK_STREAM, 80);
    CWebCtrl controller;
    controller.Init("127.0.0.1", 6000);
    controller.SetWebPort(80);
    for (int round = 0; round < 2; ++round) {
        const auto start = [&] { EXPECT_EQ(controller.Start("/nowhere/web_root"), 0); };
        EXPECT_EQ(Capture(start).out.find("already started"), std::string::npos);
        EXPECT_EQ(controller.Stop(), 0);
    }
    controller.SetCtrlAddr("192.0.2.7", 6001);
    EXPECT_EQ(controller.Restart(), 0);
    EXPECT_STREQ(controller.DestinationIp(), "127.0.0.1");
    EXPECT_EQ(controller.DestinationPort(), 6001);
    EXPECT_EQ(controller.Stop(), 0);
}

#ifndef WEBCTRL_SANITIZED // a sanitizer needs the memory itself
TEST_F(WebCtrl, CanStartAfterAThreadCouldNot) {
    CWebCtrl controller;
    const Captured captured = CaptureInChild([&] {
        const rlimit none{1, 1};
        setrlimit(RLIMIT_AS, &none);
        return controller.Start("/nowhere") == -1 && controller.Start("/nowhere") == -1 ? 0 : 1;
    });
    EXPECT_EQ(captured.status, 0) << captured.out;
}
#endif
