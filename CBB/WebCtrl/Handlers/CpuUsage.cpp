// SPDX-License-Identifier: GPL-2.0-only
// The CPU gauge of the page. It shows a random number, no measurement.
#include <cstdlib>

#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"

void get_cpu_usage(CWebCtrl&, std::string_view, JsonAnswer& answer) {
    // Nothing seeds rand or calls it elsewhere, so every start gives the same numbers.
    const int drawn = rand();
    answer.Chunk("{ \"strFD_SSID\": \"", "new", " \"");
    answer.Chunk(", \"result\": ", static_cast<int>(drawn / 2147483647.0 * 100.0), " }");
    answer.End();
}
