// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/PrintLine.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <string>

#include "tests/support/Capture.h"

namespace {

TEST(PrintLine, PutsItsPiecesTogether) {
    const char* const name = "eth0";
    const unsigned char flag = 255;
    const auto print = [&] {
        PrintLine("if:", name, ", ", Ipv4{htonl(0xC0A83202)}, "/", -1, " ", flag, " 0x",
                  Hex{0xC0A8FF0}, std::string(), ".\n");
        PrintLine(Ipv4{0}, "\n");
    };
    EXPECT_EQ("if:eth0, 192.168.50.2/-1 255 0xc0a8ff0.\n0.0.0.0\n", Capture(print).out);
}

} // namespace
