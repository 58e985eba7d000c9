// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/HttpServer.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <malloc.h>
#include <mongoose.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>

#include "CBB/WebCtrl/ExchangeQueue.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/HostGuard.h"
#include "CBB/WebCtrl/HttpConnection.h"
#include "CBB/WebCtrl/IncludePage.h"
#include "CBB/WebCtrl/WebCtrl.h"

namespace {

constexpr int kPollMs = 1000;

struct Route {
    const char* uri;
    Handler handler;
    const char* announced; // printed before the call, if at all
};

constexpr Route kRoutes[] = {
    {"/get_LangInfo", get_LangInfo, "--------------------------get_LangInfo, start."},
    {"/set_LangInfo", set_LangInfo, nullptr},
    {"/get_BaseInfo", get_BaseInfo, "--------------------------get_BaseInfo, start."},
    {"/set_BaseInfo", set_BaseInfo, nullptr},
    {"/get_MirrorInfo", get_MirrorInfo, nullptr},
    {"/set_MirrorInfo", set_MirrorInfo, nullptr},
    {"/get_NetWModeInfo", get_NetWModeInfo, nullptr},
    {"/set_NetWModeInfo", set_NetWModeInfo, nullptr},
    {"/get_VCmsInfo", get_VCmsInfo, nullptr},
    {"/set_VCmsInfo", set_VCmsInfo, nullptr},
    {"/get_WifiInfo", get_WifiInfo, nullptr},
    {"/set_WifiInfo", set_WifiInfo, nullptr},
    {"/get_GNetInfo", get_GNetInfo, nullptr},
    {"/set_GNetInfo", set_GNetInfo, nullptr},
    {"/get_GB28181Info", get_GB28181Info, nullptr},
    {"/set_GB28181Info", set_GB28181Info, nullptr},
    {"/get_cpu_usage", get_cpu_usage, "-------------------handle_get_cpu_usage."},
    {"/get_VersionInfo", get_VersionInfo, nullptr},
    {"/get_SystemInfo", get_SystemInfo, nullptr},
};

// Every other option keeps the library's default.
mg_http_serve_opts g_serveOptions{};

std::string_view Header(mg_http_message* message, const char* name) {
    const mg_str* value = mg_http_get_header(message, name);
    return value != nullptr ? std::string_view(value->buf, value->len) : std::string_view();
}

// Answers a request that another site's page sent; false when it is none.
bool RefuseForeignRequest(mg_connection* connection, mg_http_message* message) {
    const std::string_view host = Header(message, "Host");
    const std::string_view origin = Header(message, "Origin");
    if (IsTrustedRequest(host, origin))
        return false;
    printf("CWebCtrl::DoHttpRequest, refused, host:%.*s, origin:%.*s.\n",
           static_cast<int>(host.size()), host.data(), static_cast<int>(origin.size()),
           origin.data());
    mg_http_reply(connection, 403, "", "This name or site may not use the recorder\n");
    return true;
}

// Answers a request whose path the library could not decode: it would look up what it has of the
// path and, the text having no end, whatever lies behind it on the stack.
bool RefuseMalformedPath(mg_connection* connection, mg_http_message* message) {
    char path[PATH_MAX];
    if (mg_url_decode(message->uri.buf, message->uri.len, path, sizeof(path), 0) >= 0)
        return false;
    mg_http_reply(connection, 400, "", "Invalid path\n");
    return true;
}

// The route of exactly this path; null when it is a file's.
const Route* FindRoute(mg_str uri) {
    for (const Route& route : kRoutes) {
        if (mg_strcmp(uri, mg_str(route.uri)) == 0)
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
    g_serveOptions.root_dir = webRoot;
    struct stat status;
    if (stat(webRoot, &status) != 0) {
        fputs("Cannot find web_root directory, exiting\n", stderr);
        return -1;
    }
    printf("Starting web server on port %s\n", port.c_str());
    for (;;)
        mg_mgr_poll(&manager, ExchangesWait() ? 0 : kPollMs);
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
    const Route* route = FindRoute(message->uri);
    if (route != nullptr) {
        puts("--------------------------DoHttpRequeset, start.");
        if (RefuseForeignRequest(connection, message))
            return;
        if (route->announced != nullptr)
            puts(route->announced);
        route->handler(*this, connection, message);
        return;
    }
    // Both lines at once: each write(2) is a good part of what a small file costs.
    fputs("--------------------------DoHttpRequeset, start.\n"
          "------------others-------mg_serve_http.\n",
          stdout);
    if (!RefuseMalformedPath(connection, message) &&
        !ServeIncludePage(connection, message, g_serveOptions.root_dir))
        mg_http_serve_dir(connection, message, &g_serveOptions);
}
