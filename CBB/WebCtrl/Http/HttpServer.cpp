// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/HttpServer.h"

#include <cstdio>
#include <cstring>
#include <malloc.h>
#include <mongoose.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>

#include "CBB/WebCtrl/PrintLine.h"
#include "CBB/WebCtrl/Http/ExchangeQueue.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Http/HostGuard.h"
#include "CBB/WebCtrl/Http/HttpConnection.h"
#include "CBB/WebCtrl/Http/StaticFiles.h"
#include "CBB/WebCtrl/WebCtrl.h"

namespace {

constexpr int kPollMs = 1000;

struct Route {
    std::string_view uri;
    Handler handler;
    const char* announced; // printed before the call
};

constexpr Route kRoutes[] = {
    {"/get_LangInfo", get_LangInfo, "--------------------------get_LangInfo, start.\n"},
    {"/set_LangInfo", set_LangInfo, ""},
    {"/get_BaseInfo", get_BaseInfo, "--------------------------get_BaseInfo, start.\n"},
    {"/set_BaseInfo", set_BaseInfo, ""},
    {"/get_MirrorInfo", get_MirrorInfo, ""},
    {"/set_MirrorInfo", set_MirrorInfo, ""},
    {"/get_NetWModeInfo", get_NetWModeInfo, ""},
    {"/set_NetWModeInfo", set_NetWModeInfo, ""},
    {"/get_VCmsInfo", get_VCmsInfo, ""},
    {"/set_VCmsInfo", set_VCmsInfo, ""},
    {"/get_WifiInfo", get_WifiInfo, ""},
    {"/set_WifiInfo", set_WifiInfo, ""},
    {"/get_GNetInfo", get_GNetInfo, ""},
    {"/set_GNetInfo", set_GNetInfo, ""},
    {"/get_GB28181Info", get_GB28181Info, ""},
    {"/set_GB28181Info", set_GB28181Info, ""},
    {"/get_cpu_usage", get_cpu_usage, "-------------------handle_get_cpu_usage.\n"},
    {"/get_VersionInfo", get_VersionInfo, ""},
    {"/get_SystemInfo", get_SystemInfo, ""},
};

constexpr char kStartLine[] = "--------------------------DoHttpRequeset, start.\n";

const char* g_webRoot;

std::string_view Header(mg_http_message* message, const char* name) {
    const mg_str* value = mg_http_get_header(message, name);
    return value != nullptr ? std::string_view(value->buf, value->len) : std::string_view();
}

void RefuseForeignRequest(mg_connection* connection, std::string_view host,
                          std::string_view origin) {
    printf("CWebCtrl::DoHttpRequest, refused, host:%.*s, origin:%.*s.\n",
           static_cast<int>(host.size()), host.data(), static_cast<int>(origin.size()),
           origin.data());
    mg_http_reply(connection, 403, "", "This name or site may not use the recorder\n");
}

// The route of exactly this path; null when it is a file's.
const Route* FindRoute(mg_str uri) {
    for (const Route& route : kRoutes) {
        if (route.uri == std::string_view(uri.buf, uri.len))
            return &route;
    }
    return nullptr;
}

// Whether a path leads to an exchange with the recorder.
bool AsksRecorder(mg_str uri) {
    const Route* route = FindRoute(uri);
    return route != nullptr && route->handler != get_cpu_usage;
}

bool g_served;  // somebody, since the last turn of the loop
bool g_trimmed; // no memory to give back since then

// What a burst of clients has taken is the recorder's again after a rest.
void GiveMemoryBack(bool resting) {
#ifdef __GLIBC__
    if (resting && !g_trimmed)
        malloc_trim(0);
#endif
    g_trimmed = resting;
}

void EndTurn(mg_connection* listener) {
    const bool served = std::exchange(g_served, false);
    GiveMemoryBack(!served && !ExchangesWait() && !listener->is_readable);
    ServeExchanges(listener->mgr, served);
}

} // namespace

int RunWebServer(const char* webRoot) {
    const std::string port = std::to_string(CWebCtrl::GetInstance()->WebPort());
    mg_mgr manager;
    mg_mgr_init(&manager);
    if (mg_http_listen(&manager, ("http://0.0.0.0:" + port).c_str(), HttpEventHandler, nullptr) ==
        nullptr) {
        fprintf(stderr, "Cannot bind to %s\n", port.c_str());
        mg_mgr_free(&manager);
        return -1;
    }
    g_webRoot = webRoot;
    struct stat status;
    if (stat(webRoot, &status) != 0) {
        fputs("Cannot find web_root directory, exiting\n", stderr);
        return -1;
    }
    printf("Starting web server on port %s\n", port.c_str());
    for (;;)
        mg_mgr_poll(&manager, ExchangesWait() || RequestLies() ? 0 : kPollMs);
}

void HttpEventHandler(mg_connection* connection, int event, void* eventData) {
    // Every event but this is of somebody who is being served. The listener's comes last in a turn.
    if (event != MG_EV_POLL)
        g_served = true;
    else if (connection->is_listening)
        EndTurn(connection);
    if (event != MG_EV_HTTP_MSG) {
        GuardConnection(connection, event, eventData);
        return;
    }
    auto* message = static_cast<mg_http_message*>(eventData);
    if (!AdmitRequest(connection, message))
        return;
    if (AsksRecorder(message->uri))
        AnswerInTurn(connection, message);
    else
        CWebCtrl::GetInstance()->DoHttpRequest(connection, message);
}

void CWebCtrl::DoHttpRequest(mg_connection* connection, mg_http_message* message) {
    // Lines that follow each other are printed at once: a write(2) is a good part of what a small
    // request costs.
    const Route* route = FindRoute(message->uri);
    if (route != nullptr) {
        const std::string_view host = Header(message, "Host");
        const std::string_view origin = Header(message, "Origin");
        const bool trusted = IsTrustedRequest(host, origin);
        PrintLine(kStartLine, trusted ? route->announced : "");
        if (trusted)
            route->handler(*this, connection, message);
        else
            RefuseForeignRequest(connection, host, origin);
        return;
    }
    PrintLine(kStartLine, "------------others-------mg_serve_http.\n");
    ServeFile(connection, message, g_webRoot);
}
