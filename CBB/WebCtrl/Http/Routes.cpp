// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/Routes.h"

#include <mongoose.h>
#include <string_view>

#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Http/HostGuard.h"
#include "CBB/WebCtrl/Http/LoginGuard.h"
#include "CBB/WebCtrl/Http/StaticFiles.h"
#include "CBB/WebCtrl/PrintLine.h"
#include "CBB/WebCtrl/WebCtrl.h"

namespace {

constexpr char kStartLine[] = "--------------------------DoHttpRequeset, start.\n";

std::string_view ToView(const mg_str& text) {
    return {text.buf, text.len};
}

// The route of exactly this path; null for a file's path.
const Route* FindRoute(const mg_str& path) {
    for (const Route& route : kRoutes)
        if (route.path == ToView(path))
            return &route;
    return nullptr;
}

std::string_view Header(mg_http_message* message, const char* name) {
    const mg_str* value = mg_http_get_header(message, name);
    return value != nullptr ? ToView(*value) : std::string_view();
}

RequestSource SourceOf(mg_http_message* message) {
    return {Header(message, "Host"), Header(message, "Origin"), Header(message, "Referer"),
            Header(message, "User-Agent"), message->body.len > 0};
}

void RefuseForeignRequest(mg_connection* connection, const RequestSource& source) {
    const std::string_view from = source.origin.empty() ? source.referer : source.origin;
    PrintLine("CWebCtrl::DoHttpRequest, refused, host:", Foreign{source.host},
              ", origin:", Foreign{from}, ".\n");
    mg_http_reply(connection, 403, "", "This name or site may not use the recorder\n");
}

// These methods ask about a path; on a write path they must not write.
bool OnlyAsks(const Route& route, std::string_view method) {
    return Writes(route) && (method == "HEAD" || method == "OPTIONS" || method == "TRACE");
}

void CallHandler(CWebCtrl& controller, const Route& route, mg_connection* connection,
                 mg_http_message* message) {
    JsonAnswer answer(MayWrite(*message) ? JsonAnswer::For::All : JsonAnswer::For::Reader);
    route.handler(controller, ToView(message->body), answer);
    const std::string_view bytes = answer.Bytes();
    // No answer is better than a part of one.
    connection->is_closing = bytes.empty() || !mg_send(connection, bytes.data(), bytes.size());
    connection->is_resp = 0;
}

} // namespace

bool AsksRecorder(const mg_str& path) {
    const Route* route = FindRoute(path);
    return route != nullptr && route->handler != get_cpu_usage;
}

void CWebCtrl::DoHttpRequest(mg_connection* connection, mg_http_message* message) {
    const Route* route = FindRoute(message->uri);
    if (route == nullptr) {
        PrintLine(kStartLine, "------------others-------mg_serve_http.\n");
        ServeFile(connection, message, m_szWebRoot);
        return;
    }
    const RequestSource source = SourceOf(message);
    const bool trusted = IsTrusted(source, Writes(*route) ? RequestKind::Write : RequestKind::Read);
    const bool asks = OnlyAsks(*route, ToView(message->method));
    PrintLine(kStartLine, trusted && !asks ? route->announced : "");
    if (!trusted)
        RefuseForeignRequest(connection, source);
    else if (asks)
        mg_http_reply(connection, 405, "Allow: GET, POST\r\n", "This path takes GET and POST\n");
    else if (Writes(*route) && !MayWrite(*message))
        mg_http_reply(connection, 403, "", "This login may only read\n");
    else
        CallHandler(*this, *route, connection, message);
}
