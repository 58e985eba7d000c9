// SPDX-License-Identifier: GPL-2.0-only
// The input is what the recorder replies to each datagram of a route; a NUL ends a reply, and the
// last one is repeated.
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>

#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Http/ChunkedBody.h"
#include "tests/fuzz/Recorder.h"

static std::string BodyOf(std::string answer) {
    const std::string head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    Require(answer.compare(0, head.size(), head) == 0);
    answer.erase(0, head.size());
    Require(MeasureChunks(answer).wireBytes == answer.size());
    answer.resize(JoinChunks(answer.data(), answer.size()));
    return answer;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string replies(data, data + size);
    QuietController controller;
    for (const Route& route : kRoutes) {
        size_t at = 0;
        g_recorder = [&](const std::string&) {
            const std::string reply = replies.c_str() + at;
            at += replies.find('\0', at) == std::string::npos ? 0 : reply.size() + 1;
            return reply;
        };
        const std::string body = BodyOf(Ask(controller, route.path, ""));
        Require(nlohmann::json::accept(body) && body.find('<') == std::string::npos);
    }

    std::string reply = std::string(replies.c_str()).substr(0, kReplyCapacity - 1);
    int type = DEVICE_UNSUPPORTED;
    Require(controller.GetParaCmdType(reply.c_str(), &type) <= 0);
    Require(type >= BROAD_SEARCH && type <= DEVICE_UNSUPPORTED);
    const auto value = std::make_unique<char[]>(kAttrValueCapacity);
    controller.GetParaAttrValue(reply.c_str(), "Result", value.get());
    Require(strnlen(value.get(), kAttrValueCapacity) < kAttrValueCapacity);
    return 0;
}
