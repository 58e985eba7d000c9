// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/LoginGuard.h"

#include <mongoose.h>

#include "tests/unit/webctrl/http/Hashes.h"

TEST(LoginGuard, PrintsTenRefusedLoginsAMinute) {
    const std::string path = testing::TempDir() + "guard" + std::to_string(getpid());
    std::ofstream(path) << "a:" BCRYPT;
    chmod(path.c_str(), 0600);
    ASSERT_EQ(StartLogin(path), "");
    unlink(path.c_str());
    // "apass", without a colon: refused without a hash.
    const std::string request = "GET / HTTP/1.1\r\nAuthorization: Basic YXBhc3M=\r\n\r\n";
    mg_http_message message;
    mg_http_parse(request.data(), request.size(), &message);
    const auto prints = [&](uint64_t nowMs) {
        const auto refuse = [&] { EXPECT_EQ(RuleOnLogin(message, 0, nowMs).status, 401); };
        return !Capture(refuse).out.empty();
    };
    for (uint64_t nowMs = 1; nowMs <= 10; ++nowMs)
        EXPECT_TRUE(prints(nowMs));
    const std::vector<bool> later{prints(60000), prints(60001), prints(60001), prints(60002)};
    EXPECT_EQ(later, (std::vector<bool>{false, true, false, true}));
}
