// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string>
#include <string_view>

// Keeps other sites' pages away from the API. The recorder sits on networks where a phone also
// browses the web: a foreign page could send it forms (cross-site request forgery) or, with its
// own domain name pointed at the recorder, read its answers (DNS rebinding).

/// Lets the API also be reached under `name`, a domain name that would be refused otherwise. To be
/// called before the server starts.
void AllowHost(const std::string& name);

/// Whether an API request with these headers is to be answered (RFC 9110, 7.2; RFC 6454, 7).
/// `host` may have a port. Refused are a host that is a public domain name, which is none of an IP
/// address, `localhost`, a single label, a name under .local, .lan or .home.arpa or an allowed one,
/// and an origin of another host. An empty text stands for a header that is not there; without
/// either nothing is refused.
bool IsTrustedRequest(std::string_view host, std::string_view origin);
