// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/HostGuard.h"

#include "tests/unit/Unit.h"

static bool IsTrusted(const RequestSource& source) {
    const bool read = IsTrusted(source, RequestKind::Read);
    EXPECT_EQ(IsTrusted(source, RequestKind::Write), read) << source.host << " " << source.origin;
    return read;
}

TEST(HostGuard, KeepsOtherNamesOut) {
    AllowHost("recorder.fleet.example");
    for (const char* host : {"", "192.168.1.10:8080", "[fe80::1]:80", "recorder", "Recorder.LAN",
                             "a.local", "a.b.home.arpa.:80", "a.localhost", "a.internal", "a.home",
                             "a.fritz.box", "Recorder.fleet.example"})
        EXPECT_TRUE(IsTrusted({host, "", "", "", false})) << host;
    for (const char* host : {"evil.example:80", "192.168.1.10.evil.example",
                             "evil.example.local.example", "xfritz.box", "fleet.example", ".lan",
                             "x.recorder.fleet.example", "[192.168.1.10].evil", "[evil]", "x::1]"})
        EXPECT_FALSE(IsTrusted({host, "", "", "", false})) << host;
}

TEST(HostGuard, KeepsOtherOriginsOut) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"[fe80::1]:80", "https://[fe80::1]", true},
        {"a.b.home.arpa.:80", "http://A.b.home.arpa", true},
        {"evil.example:80", "http://evil.example", false},
        {"192.168.1.10", "http://192.168.1.10.evil.example", false},
        {"192.168.1.10", "http://192.168.1.10:1@evil.example", false},
        {"192.168.1.10", "null", false},
        {"", "http://", false},
    };
    for (const auto& [host, origin, trusted] : cases)
        EXPECT_EQ(IsTrusted({host, origin, "", "", false}), trusted) << host << " " << origin;
}

TEST(HostGuard, AsksMoreOfAWrite) {
    const char *browser = "Mozilla/5.0 (X11; Linux x86_64)", *host = "10.0.0.1";
    const std::pair<RequestSource, bool> cases[] = {
        {{host, "", "", "Wget/1.21", false}, true},
        {{host, "", "", browser, true}, true},
        {{host, "", "http://10.0.0.1:8080/?a#device", browser, false}, true},
        {{host, "http://10.0.0.1", "http://evil.example/", browser, false}, true},
        {{"", "", "", browser, false}, false},
        {{host, "", "http://evil.example/10.0.0.1", "", true}, false},
        {{host, "", "http://evil.example?http://10.0.0.1", "", true}, false},
        {{"", "", "http://10.0.0.1/", "", true}, false},
    };
    for (const auto& [source, trusted] : cases) {
        EXPECT_EQ(IsTrusted(source, RequestKind::Write), trusted) << source.referer;
        EXPECT_TRUE(IsTrusted(source, RequestKind::Read)) << source.referer;
    }
}
