// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/WebCtrl.h"

#include "tests/support/Taken.h"
#include "tests/unit/Unit.h"

using WebCtrl = InSandbox;

TEST_F(WebCtrl, EndsWithoutItsFolderAndKeepsThePort) {
    const Captured captured = CaptureInChild([] {
        CWebCtrl controller;
        const int first = controller.Start("/nowhere/web_root") + controller.Stop();
        return first + controller.Start("/nowhere/web_root") + controller.Stop();
    });
    EXPECT_EQ(captured.status, 0);
    EXPECT_EQ(captured.out.find("already started"), std::string::npos);
    EXPECT_EQ(captured.err.substr(captured.err.find("Cannot")),
              "Cannot find web_root directory, exiting\nCannot bind to 80\n");
}

TEST_F(WebCtrl, RestartsAtTheFirstAddress) {
    const Taken taken(SOCK_STREAM, 80);
    CWebCtrl controller;
    EXPECT_EQ(controller.DestinationPort(), 6000);
    controller.Init("127.0.0.1", 6000);
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
    EXPECT_NE(captured.out.find("create rt svc pthread failed ["), std::string::npos);
}
#endif

TEST_F(WebCtrl, IsOneAndStartsOnce) {
    const Captured captured = CaptureInChild(
        [] { return CWebCtrl::GetInstance()->Start("/") + CWebCtrl::GetInstance()->Start("/"); });
    EXPECT_EQ(captured.status, 0);
    EXPECT_NE(captured.out.find("CWebCtrl::Start, is already started.\n"), std::string::npos);
}
