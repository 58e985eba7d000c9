// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/TextFun.h"

#include "tests/unit/Unit.h"

TEST(TextFun, WhatATextIs) {
    // The text, and whether it is an address, hex, an integer.
    const std::tuple<const char*, int, int, int> cases[] = {
        {"255.2.255.1", 1, 0, 0}, {"1.2.3.256", 0, 0, 0},
        {"...", 1, 0, 0},         {"1.2.3.4.", 0, 0, 0},
        {"1.2.3.a", 0, 0, 0},     {"", 0, 0, 1},
        {"-", 0, 0, 1},           {"-12", 0, 0, 1},
        {"1-2", 0, 0, 0},         {"0x", 0, 0, 0},
        {"0x1", 0, 1, 0},         {"0X09afAF", 0, 1, 0},
        {"0xg", 0, 0, 0},         {"1x1", 0, 0, 0},
        {nullptr, 0, 0, 0},       {"1.2.3.4294967297", 0, 0, 0}};
    for (const auto& [text, ipv4, hex, integer] : cases)
        EXPECT_EQ(std::tuple(ipv4, hex, integer),
                  std::tuple(IsIpv4Text(text), IsHexText(text), IsIntegerText(text)))
            << text;
    EXPECT_STREQ("a \n", SkipBlanks(" \t\r\na \n"));
    EXPECT_EQ(nullptr, SkipBlanks(" \t\r\n"));
    char number[7];
    EXPECT_STREQ("-12345", IntToText(-1234567, number));
    in_addr_t addr = 0;
    EXPECT_EQ("0 MyGetHostByName, HostName :127.0.0.9/nMyGetHostByName, IP Address :127.0.0.9/n",
              Told([&addr] { return MyGetHostByName("127.0.0.9", &addr); }));
    EXPECT_EQ("-1 MyGetHostByName, Can't Get IP From Domain:::1./n",
              Told([&addr] { return MyGetHostByName("::1", &addr); }));
    EXPECT_EQ(htonl(0x7F000009), addr);
}
