// SPDX-License-Identifier: GPL-2.0-only
// The first byte picks a write route ('A' the first) and what the recorder replies, the rest is the
// form. Recorder.h says what is required of the datagrams.
#include "tests/fuzz/Recorder.h"

#include <iterator>

namespace {

constexpr const char* kRoutes[] = {
    "/set_LangInfo", "/set_BaseInfo", "/set_MirrorInfo", "/set_NetWModeInfo",
    "/set_VCmsInfo", "/set_WifiInfo", "/set_GNetInfo",   "/set_GB28181Info",
};
// A version section counts the lens IDs that are taken.
constexpr const char* kReplies[] = {
    "<VariCfgSec Action=\"DEVICE_SET\" Result=\"1\"><stVersion VideoCnt=\"4\"/></VariCfgSec>",
    "<VariCfgSec Action=\"DEVICE_SET\" Result=\"0\"><stVersion VideoCnt=\"99\"/></VariCfgSec>",
    "<VariCfgSec Action=\"DEVICE_SET\"><stVersion VideoCnt=\"4294967295\"/></VariCfgSec>",
    "",
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const auto choice = static_cast<uint8_t>(data[0] - 'A');
    const char* reply = kReplies[choice / std::size(kRoutes) % std::size(kReplies)];
    g_recorder = [reply](const std::string&) { return reply; };
    QuietController controller;
    const std::string answer = Ask(controller, kRoutes[choice % std::size(kRoutes)],
                                   {reinterpret_cast<const char*>(data) + 1, size - 1});
    const std::string begin =
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\ne\r\n{\"result\": ";
    Require(answer == begin + "1 }\r\n0\r\n\r\n" || answer == begin + "0 }\r\n0\r\n\r\n");
    return 0;
}
