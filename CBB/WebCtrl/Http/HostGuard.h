// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string>
#include <string_view>

// Keeps other sites' pages away from the API. The recorder sits on networks where a phone also
// browses the web: a foreign page could send it forms (cross-site request forgery) or, with its
// own domain name pointed at the recorder, read its answers (DNS rebinding).

// Lets browsers reach the API under `name` too, a domain name that is refused otherwise. Call it
// before the server starts.
void AllowHost(const std::string& name);

// Where a request says that it comes from. An empty text stands for a header that is not there.
struct RequestSource {
    std::string_view host; // may have a port
    std::string_view origin;
    std::string_view referer;
    std::string_view userAgent;
    bool hasBody = false;
};

enum class RequestKind { Read, Write };

// Whether an API request from there is to be answered (RFC 9110, 7.2 and 10.1.3; RFC 6454, 7).
//
// Refused is a host that is a public domain name, which is none of an IP address, a single label,
// a name under .local, .lan, .home.arpa, .localhost, .internal, .home or .fritz.box, or an allowed
// one. Refused is an origin of another host; ports are not compared, since proxies drop them. A
// write is also refused without an origin when its referer is of another host, or when it has
// neither of them and no body and comes from a browser: an empty write erases a group. Tools send
// neither origin nor referer: of theirs a host alone is refused.
bool IsTrusted(const RequestSource& source, RequestKind kind);
