// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/HostGuard.h"

#include <gtest/gtest.h>

namespace {

TEST(HostGuard, KeepsOtherSitesOut) {
    AllowHost("recorder.fleet.example");
    const struct {
        const char* host;
        const char* origin;
        bool trusted;
    } cases[] = {
        {"", "", true},
        {"192.168.1.10", "", true},
        {"192.168.1.10:8080", "http://192.168.1.10:8080", true},
        {"[fe80::1]:80", "http://[fe80::1]", true},
        {"localhost", "http://LOCALHOST", true},
        {"recorder", "", true},
        {"Recorder.LAN", "", true},
        {"a.b.home.arpa.:80", "http://a.b.home.arpa", true},
        {"recorder.fleet.example", "http://Recorder.Fleet.Example", true},
        {"evil.example", "", false},
        {"evil.example:80", "http://evil.example", false},
        {"192.168.1.10.evil.example", "", false},
        {"evil.example.local.example", "", false},
        {"xlan.example", "", false},
        {".lan.example", "", false},
        {"fleet.example", "", false},
        {"[192.168.1.10].evil", "", false},
        {"[evil]", "", false},
        {"192.168.1.10", "http://evil.example", false},
        {"192.168.1.10", "http://192.168.1.10.evil.example", false},
        {"192.168.1.10", "null", false},
        {"192.168.1.10", "http://", false},
        {"", "http://evil.example", false},
        {"recorder.fleet.example", "http://evil.example", false},
    };
    for (const auto& each : cases)
        EXPECT_EQ(IsTrustedRequest(each.host, each.origin), each.trusted)
            << each.host << " " << each.origin;
}

} // namespace
