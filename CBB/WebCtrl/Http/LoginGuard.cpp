// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/LoginGuard.h"

#include <atomic>
#include <memory>
#include <mongoose.h>

#include "CBB/WebCtrl/Http/Login.h"
#include "CBB/WebCtrl/PrintLine.h"

namespace {

constexpr size_t kLines = 10;
constexpr uint64_t kLinesMs = 60000;

std::string g_path;
std::unique_ptr<Login> g_login;                // the web thread's, once it runs
std::atomic<std::vector<Account>*> g_reloaded; // on its way to the web thread

bool ReadLogin(mg_http_message& message, Credentials* credentials) {
    const mg_str* header = mg_http_get_header(&message, "Authorization");
    return header != nullptr && ReadBasic({header->buf, header->len}, credentials);
}

void PrintRefused(const Credentials& credentials, uint32_t address, uint64_t nowMs) {
    static uint64_t printed[kLines];
    static size_t oldest = 0;
    if (printed[oldest] != 0 && nowMs - printed[oldest] < kLinesMs)
        return;
    printed[oldest] = nowMs;
    oldest = (oldest + 1) % kLines;
    PrintLine("login refused, address:", Ipv4{address}, ", name:", Foreign{credentials.Name()},
              ".\n");
}

LoginRuling AskForLogin() {
    return {LoginRuling::Verdict::Refuse, 401,
            "WWW-Authenticate: Basic realm=\"webctrl\", charset=\"UTF-8\"\r\n", "Log in"};
}

void TakeReloaded() {
    const std::unique_ptr<std::vector<Account>> accounts(g_reloaded.exchange(nullptr));
    if (accounts != nullptr)
        g_login->Replace(std::move(*accounts));
}

} // namespace

std::string StartLogin(const std::string& path) {
    std::vector<Account> accounts;
    const std::string fault = ReadLoginFile(path, &accounts);
    if (!fault.empty())
        return path + ": " + fault;
    g_path = path;
    g_login = std::make_unique<Login>(std::move(accounts));
    return {};
}

void ReloadLogin() {
    auto accounts = std::make_unique<std::vector<Account>>();
    const std::string fault = ReadLoginFile(g_path, accounts.get());
    if (fault.empty()) {
        delete g_reloaded.exchange(accounts.release());
        PrintLine("login file read again.\n");
    } else {
        PrintLine("login file not taken, the old one stays in force: ", g_path, ": ", fault, ".\n");
    }
}

LoginRuling RuleOnLogin(mg_http_message& message, uint32_t address, uint64_t nowMs) {
    if (g_login == nullptr)
        return {LoginRuling::Verdict::Go, 0, "", ""};
    TakeReloaded();
    Credentials credentials;
    const bool isLogin = ReadLogin(message, &credentials);
    switch (isLogin ? g_login->Ask(credentials, address, nowMs) : Login::Answer::Refused) {
    case Login::Answer::Write:
    case Login::Answer::Read:
        return {LoginRuling::Verdict::Go, 0, "", ""};
    case Login::Answer::Wait:
        return {LoginRuling::Verdict::Wait, 0, "", ""};
    case Login::Answer::Later:
        return {LoginRuling::Verdict::Refuse, 429,
                "Retry-After: " + std::to_string(g_login->RetryAfter(address, nowMs)) + "\r\n",
                "Wrong logins hold back new ones"};
    case Login::Answer::Refused:
        break;
    }
    // A browser's first request has none: it asks whether one is needed.
    if (!credentials.text.empty())
        PrintRefused(credentials, address, nowMs);
    return AskForLogin();
}

bool IsLoginHashing() {
    return g_login != nullptr && g_login->Hashing();
}

bool LoginHashEnded(uint64_t nowMs) {
    return g_login != nullptr && g_login->HashEnded(nowMs);
}

void ForgetRefusedLogin() {
    g_login->ForgetRefused();
}

bool MayWrite(mg_http_message& message) {
    Credentials credentials;
    return g_login == nullptr ||
           (ReadLogin(message, &credentials) && g_login->MayWrite(credentials));
}
