// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <string>

struct mg_http_message;

// The login that --login demands for every path. Without --login every request may go.

// Reads a login file and demands its logins from now on. Call it before the server starts. Returns
// what is wrong with the file, or an empty text.
std::string StartLogin(const std::string& path);

// Reads the file again, on any thread. A bad file changes nothing. Prints a line either way.
void ReloadLogin();

struct LoginRuling {
    enum class Verdict {
        Go,
        Wait,   // until LoginHashEnded, and then to be ruled on again
        Refuse, // with the status, the headers, each with its CRLF, and the reason
    };
    Verdict verdict;
    int status;
    std::string headers;
    const char* reason;
};

// Rules on a request of a client, given its IPv4 address in network order and the time. Prints a
// line for a wrong login, at most ten a minute. This and what follows is the web thread's.
LoginRuling RuleOnLogin(mg_http_message& message, uint32_t address, uint64_t nowMs);

// Whether a login is being hashed. The loop then has to look again soon.
bool IsLoginHashing();
// Whether the hash that requests wait for has been made. Rule on these requests, then call
// ForgetRefusedLogin: who asks again is hashed again.
bool LoginHashEnded(uint64_t nowMs);
void ForgetRefusedLogin();

// Whether a request that may go may also write, and read passwords and keys.
bool MayWrite(mg_http_message& message);
