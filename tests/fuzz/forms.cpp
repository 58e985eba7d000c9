// SPDX-License-Identifier: GPL-2.0-only
// The first byte picks what the recorder replies ('A' the first), the rest is the form, which goes
// to every write route. Recorder.h says what is required of the datagrams.
#include <iterator>

#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "tests/fuzz/Recorder.h"

// A version section counts the lens IDs that are taken.
static constexpr const char* kReplies[] = {
    "<VariCfgSec Action=\"DEVICE_SET\" Result=\"1\"><stVersion VideoCnt=\"4\"/></VariCfgSec>",
    "<VariCfgSec Action=\"DEVICE_SET\" Result=\"0\"><stVersion VideoCnt=\"99\"/></VariCfgSec>",
    "<VariCfgSec Action=\"DEVICE_SET\"><stVersion VideoCnt=\"4294967295\"/></VariCfgSec>",
    "",
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const char* reply = kReplies[static_cast<uint8_t>(data[0] - 'A') % std::size(kReplies)];
    g_recorder = [reply](const std::string&) { return reply; };
    QuietController controller;
    const std::string begin =
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\ne\r\n{\"result\": ";
    for (const Route& route : kRoutes) {
        if (!Writes(route))
            continue;
        const std::string answer =
            Ask(controller, route.path, {reinterpret_cast<const char*>(data) + 1, size - 1});
        Require(answer == begin + "1 }\r\n0\r\n\r\n" || answer == begin + "0 }\r\n0\r\n\r\n");
    }
    return 0;
}
