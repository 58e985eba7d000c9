// SPDX-License-Identifier: GPL-2.0-only
#include "tests/fuzz/Recorder.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <mongoose.h>
#include <regex>
#include <set>
#include <vector>

std::function<std::string(const std::string&)> g_recorder;

namespace {

// What is fixed of a message: all of a query, and a write but for its values, where these are
// escaped.
std::string FixedPart(const std::string& message) {
    static const std::regex value("\"(?:[^\"<&]|&(?:amp;|lt;|gt;|quot;|#x))*\"");
    const bool writes = message.find("<VariCfgSec Action=\"DEVICE_SET\">") == 0;
    return writes ? std::regex_replace(message, value, "\"\"") : message;
}

// The fixed parts of the messages that the document shows.
std::set<std::string> ReadKnown() {
    const std::regex message("<VariCfgSec Action=\"DEVICE_.*</VariCfgSec>");
    std::set<std::string> known;
    std::ifstream document(FUZZ_PROTOCOL);
    std::smatch found;
    for (std::string line; std::getline(document, line);)
        if (std::regex_search(line, found, message))
            known.insert(FixedPart(found.str()));
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
