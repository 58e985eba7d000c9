// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/HostGuard.h"

#include <gtest/gtest.h>

namespace {

constexpr char kBrowser[] = "Mozilla/5.0 (X11; Linux x86_64)";

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
        {"a.localhost", "", true},
        {"a.internal", "", true},
        {"a.home", "", true},
        {"a.fritz.box", "", true},
        {"recorder.fleet.example", "http://Recorder.Fleet.Example", true},
        {"evil.example", "", false},
        {"evil.example:80", "http://evil.example", false},
        {"192.168.1.10.evil.example", "", false},
        {"evil.example.local.example", "", false},
        {"xlan.example", "", false},
        {"xfritz.box", "", false},
        {".lan.example", "", false},
        {"fleet.example", "", false},
        {"[192.168.1.10].evil", "", false},
        {"[evil]", "", false},
        {"192.168.1.10", "http://evil.example", false},
        {"192.168.1.10", "http://192.168.1.10.evil.example", false},
        {"192.168.1.10", "http://192.168.1.10:1@evil.example", false},
        {"192.168.1.10", "null", false},
        {"192.168.1.10", "http://", false},
        {"", "http://evil.example", false},
        {"recorder.fleet.example", "http://evil.example", false},
    };
    for (const auto& each : cases)
        for (const RequestKind kind : {RequestKind::Read, RequestKind::Write})
            EXPECT_EQ(IsTrusted({each.host, each.origin, "", "", false}, kind), each.trusted)
                << each.host << " " << each.origin;
}

TEST(HostGuard, AsksMoreOfAWrite) {
    const struct {
        RequestSource source;
        bool trusted;
    } cases[] = {
        {{"10.0.0.1", "", "", "", false}, true},
        {{"10.0.0.1", "", "", "Wget/1.21", false}, true},
        {{"10.0.0.1", "", "", kBrowser, true}, true},
        {{"10.0.0.1", "", "http://10.0.0.1:8080/?a#device", kBrowser, false}, true},
        {{"10.0.0.1", "http://10.0.0.1", "http://evil.example/", kBrowser, false}, true},
        {{"10.0.0.1", "", "", kBrowser, false}, false},
        {{"", "", "", kBrowser, false}, false},
        {{"10.0.0.1", "", "http://evil.example/10.0.0.1", "", true}, false},
        {{"10.0.0.1", "", "http://evil.example?http://10.0.0.1", "", true}, false},
        {{"10.0.0.1", "", "about:blank", "", true}, false},
        {{"", "", "http://10.0.0.1/", "", true}, false},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(IsTrusted(each.source, RequestKind::Write), each.trusted) << each.source.referer;
        EXPECT_TRUE(IsTrusted(each.source, RequestKind::Read)) << each.source.referer;
    }
}

} // namespace
