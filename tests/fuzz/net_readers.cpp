// SPDX-License-Identifier: GPL-2.0-only
// The input is a route table, as the kernel writes it, and a resolver file.
#include <cstring>

#include "CBB/Util/NetText.h"
#include "tests/fuzz/Recorder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const RouteForm& form : {kRouteLookup, kRouteDeletion, kRouteList})
        for (const RouteRow& row : ParseRoutes(text, form))
            Require(strnlen(row.szIfName, sizeof(row.szIfName)) < sizeof(row.szIfName));

    DnsServerText servers[3];
    const int count = ParseNameServers(text, servers, 3);
    Require(count >= 0 && count <= 3);
    for (int i = 0; i < count; ++i)
        Require(strnlen(servers[i], sizeof(servers[i])) < sizeof(servers[i]));
    return 0;
}
