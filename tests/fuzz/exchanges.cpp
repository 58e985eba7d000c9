// SPDX-License-Identifier: GPL-2.0-only
// The input is what the recorder replies to each datagram of a route, and behind the last NUL the
// form that goes to every route. A NUL ends a reply, too, and the last one is repeated.
#include <algorithm>
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
    const std::string input(data, data + size);
    const size_t end = std::min(input.rfind('\0'), size);
    const std::string replies = input.substr(0, end), form = input.substr(std::min(end + 1, size));
    QuietController controller;
    for (const Route& route : kRoutes) {
        size_t at = 0;
        g_recorder = [&](const std::string&) {
            const std::string reply = replies.c_str() + at;
            at += replies.find('\0', at) == std::string::npos ? 0 : reply.size() + 1;
            return reply;
        };
        const std::string body = BodyOf(Ask(controller, route.path, form));
        Require(nlohmann::json::accept(body) && body.find('<') == std::string::npos);
        Require(!Writes(route) || body == "{\"result\": 1 }" || body == "{\"result\": 0 }");
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
