// SPDX-License-Identifier: GPL-2.0-only
// The CPU gauge of the page: a drawn number, no measurement.
#include <cstdlib>

#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"

void get_cpu_usage(CWebCtrl&, mg_connection* connection, mg_http_message*) {
    // Never seeded and drawn from nowhere else, so that the numbers repeat from start to start.
    const int drawn = rand();
    JsonAnswer answer(connection);
    answer.Chunk("{ \"strFD_SSID\": \"", "new", " \"");
    answer.Chunk(", \"result\": ", static_cast<int>(drawn / 2147483647.0 * 100.0), " }");
    answer.End();
}
