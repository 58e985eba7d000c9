// SPDX-License-Identifier: GPL-2.0-only
#include "tools/recorder_sim/Options.h"

#include <gtest/gtest.h>

// What it is refused with.
static std::string Parse(const std::vector<std::string>& arguments, Options& options) {
    std::string error;
    return ParseOptions(arguments, options, error) ? "" : error;
}

TEST(Options, AreOfOneRecorderOrOfMany) {
    Options options;
    EXPECT_EQ(Parse({"--listen=127.0.0.255:7000", "--state", "{n}", "--set=a.b={n}"}, options), "");
    for (const bool addresses : {false, true}) {
        options.addresses = addresses;
        const Options second = OptionsOf(options, 1);
        EXPECT_EQ(second.listenIp + ":" + std::to_string(second.listenPort),
                  addresses ? "127.0.1.0:7000" : "127.0.0.255:7001");
        EXPECT_EQ(second.stateFile + " " + second.overrides[0], "2 a.b=2");
    }
}

TEST(Options, AreRefusedWithAReason) {
    for (const char* argument :
         {"--nonsense", "stray", "--set", "--delay=soon", "--delay=1-", "--drop=0",
          "--result=99999999999", "--listen=80", "--listen=localhost:80",
          "--listen=127.0.0.1:65536", "--listen=127.0.0.1:", "--verbose=1", "--state=", "--count=0",
          "--state=one.xml", "--listen=127.0.0.1:65535"}) {
        Options options;
        EXPECT_NE(Parse({"--count", "2", argument}, options), "") << argument;
    }
}
