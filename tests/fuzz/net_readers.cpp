// SPDX-License-Identifier: GPL-2.0-only
// The input is a route table, as the kernel writes it, and a resolver file.
#include <cstring>

#include "CBB/Util/NetText.h"

namespace {

template <size_t N>
void CheckTerminated(const char (&text)[N]) {
    if (strnlen(text, N) == N)
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const RouteForm& form : {kRouteLookup, kRouteDeletion, kRouteList})
        for (const RouteRow& row : ParseRoutes(text, form))
            CheckTerminated(row.szIfName);

    constexpr int kSlots = 3;
    DnsServerText servers[kSlots];
    const int count = ParseNameServers(text, servers, kSlots);
    if (count < 0 || count > kSlots)
        __builtin_trap();
    for (int i = 0; i < count; ++i)
        CheckTerminated(servers[i]);
    return 0;
}
