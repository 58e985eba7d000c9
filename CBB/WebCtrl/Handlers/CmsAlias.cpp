// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/CmsAlias.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr int kAddressBytes = 64;

struct Alias {
    const char* server;
    const char* display;
};

constexpr Alias kAliases[] = {
#include CMS_ALIAS_TABLE
};

} // namespace

int MapCmsAddress(CWebCtrl&, int direction, const char* input, char* output) {
    const char* mapped = input;
    for (const Alias& alias : kAliases) {
        const bool toDisplay = direction == CMS_SERVER_TO_DISPLAY;
        if (strcmp(input, toDisplay ? alias.server : alias.display) == 0) {
            mapped = toDisplay ? alias.display : alias.server;
            break;
        }
    }
    snprintf(output, kAddressBytes, "%s", mapped);
    return 0;
}
