// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/HostGuard.h"

#include <algorithm>
#include <arpa/inet.h>
#include <strings.h>
#include <vector>

namespace {

std::vector<std::string> g_allowedHosts;

bool SameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool IsUnder(std::string_view name, std::string_view domain) {
    return name.size() > domain.size() &&
           SameName(name.substr(name.size() - domain.size()), domain);
}

bool BeginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

// The name or address in `host[:port]`, brackets kept, without the dot that ends a full name.
std::string_view NameOf(std::string_view host) {
    const size_t bracket = host.find(']');
    const size_t colon = host.find(':', bracket == std::string_view::npos ? 0 : bracket);
    host = host.substr(0, colon);
    if (host.size() > 1 && host.back() == '.')
        host.remove_suffix(1);
    return host;
}

bool IsAddress(std::string_view name) {
    in6_addr address;
    if (name.size() > 2 && name.front() == '[' && name.back() == ']')
        return inet_pton(AF_INET6, std::string(name.substr(1, name.size() - 2)).c_str(),
                         &address) == 1;
    return inet_pton(AF_INET, std::string(name).c_str(), &address) == 1;
}

bool IsLocalName(std::string_view name) {
    if (name.find('.') == std::string_view::npos)
        return name.find_first_of("[]") == std::string_view::npos;
    for (const char* domain :
         {".local", ".lan", ".home.arpa", ".localhost", ".internal", ".home", ".fritz.box"})
        if (IsUnder(name, domain))
            return true;
    return std::any_of(g_allowedHosts.begin(), g_allowedHosts.end(),
                       [&](const std::string& allowed) { return SameName(name, allowed); });
}

// Whether an origin or a page's address (RFC 3986, 3.2) is of the host `name`. An opaque origin,
// "null", has no host, and no browser tells a user name.
bool IsOfHost(std::string_view url, std::string_view name) {
    const size_t scheme = url.find("://");
    if (scheme == std::string_view::npos || name.empty())
        return false;
    const std::string_view rest = url.substr(scheme + 3);
    const std::string_view authority = rest.substr(0, rest.find_first_of("/?#"));
    return authority.find('@') == std::string_view::npos && SameName(NameOf(authority), name);
}

} // namespace

void AllowHost(const std::string& name) {
    g_allowedHosts.push_back(name);
}

bool IsTrusted(const RequestSource& source, RequestKind kind) {
    const std::string_view name = NameOf(source.host);
    if (!name.empty() && !IsAddress(name) && !IsLocalName(name))
        return false;
    if (!source.origin.empty())
        return IsOfHost(source.origin, name);
    if (kind == RequestKind::Read)
        return true;
    if (!source.referer.empty())
        return IsOfHost(source.referer, name);
    // A browser sends an image, a link or a form's GET so when the page hides where it is from.
    return source.hasBody || !BeginsWith(source.userAgent, "Mozilla/");
}
