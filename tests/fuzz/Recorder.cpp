// SPDX-License-Identifier: GPL-2.0-only
#include "tests/fuzz/Recorder.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <mongoose.h>
#include <set>
#include <vector>

std::function<std::string(const std::string&)> g_recorder;

namespace {

bool IsEscape(const std::string& text, size_t at) {
    for (const char* escape : {"&amp;", "&lt;", "&gt;", "&quot;", "&#x"})
        if (text.compare(at, strlen(escape), escape) == 0)
            return true;
    return false;
}

// What is fixed of a message: all of a query, and a write but for its values, where these are
// escaped.
std::string FixedPart(const std::string& message) {
    bool inValue = false;
    const bool writes = message.find("<VariCfgSec Action=\"DEVICE_SET\">") == 0;
    std::string fixed;
    for (size_t at = 0; at < message.size(); ++at) {
        const char byte = message[at];
        inValue = inValue != (byte == '"');
        const bool escaped = byte != '<' && (byte != '&' || IsEscape(message, at));
        if (!writes || !inValue || !escaped)
            fixed += byte;
    }
    return fixed;
}

// The fixed parts of the messages that the document shows.
std::set<std::string> ReadKnown() {
    std::set<std::string> known;
    const std::string end = "</VariCfgSec>";
    std::ifstream document(FUZZ_PROTOCOL);
    for (std::string line; std::getline(document, line);) {
        const size_t from = line.find("<VariCfgSec Action=\"DEVICE_"), to = line.rfind(end);
        if (from < to && to != std::string::npos)
            known.insert(FixedPart(line.substr(from, to + end.size() - from)));
    }
    return known;
}

struct RecorderLink : ControlLink {
    int SendDataToHost(const char* data, int len) override {
        static const std::set<std::string> known = ReadKnown();
        if (strlen(data) != static_cast<size_t>(len) || known.count(FixedPart(data)) == 0) {
            fprintf(stderr, FUZZ_PROTOCOL " does not show: %s\n", data);
            __builtin_trap();
        }
        reply = g_recorder(data).substr(0, kReplyCapacity - 1);
        return 0;
    }
    int RecvDataFromHost(char* out, int* outLen) override {
        if (reply.empty())
            return -2;
        strcpy(out, reply.c_str());
        *outLen = static_cast<int>(reply.size());
        return 0;
    }

    std::string reply;
};

} // namespace

std::unique_ptr<ControlLink> QuietController::OpenLink() {
    return std::make_unique<RecorderLink>();
}

std::string Ask(CWebCtrl& controller, std::string_view path, std::string_view body) {
    std::string text = "POST ";
    text.append(path).append(" HTTP/1.1\r\nContent-Length: ");
    text.append(std::to_string(body.size())).append("\r\n\r\n").append(body);
    // A block of exactly its size, so that a sanitizer sees the first byte read beyond.
    std::vector<char> request(text.begin(), text.end());
    mg_http_message message;
    Require(mg_http_parse(request.data(), request.size(), &message) > 0);
    mg_connection connection{};
    controller.DoHttpRequest(&connection, &message);
    std::string answer(reinterpret_cast<char*>(connection.send.buf), connection.send.len);
    mg_iobuf_free(&connection.send);
    return answer;
}
