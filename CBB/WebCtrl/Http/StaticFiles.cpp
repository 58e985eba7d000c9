// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/StaticFiles.h"

#include <climits>
#include <mongoose.h>
#include <string>

#include "CBB/WebCtrl/Http/IncludePage.h"

namespace {

void SendPage(mg_connection* connection, mg_http_message* message, const std::string& page) {
    mg_printf(connection,
              "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\n"
              "Content-Length: %lu\r\n\r\n",
              static_cast<unsigned long>(page.size()));
    if (mg_strcasecmp(message->method, mg_str("HEAD")) != 0)
        mg_send(connection, page.data(), page.size());
    connection->is_resp = 0;
}

} // namespace

void ServeFile(mg_connection* connection, mg_http_message* message, const char* webRoot) {
    char decoded[PATH_MAX];
    if (mg_url_decode(message->uri.buf, message->uri.len, decoded, sizeof(decoded), 0) < 0) {
        // The library would look up what it has of the path and, the text having no end, whatever
        // lies behind it on the stack.
        mg_http_reply(connection, 400, "", "Invalid path\n");
        return;
    }
    mg_http_serve_opts options{}; // the library's defaults
    options.root_dir = webRoot;
    std::string path = std::string(webRoot) + decoded;
    if (!mg_path_is_sane(mg_str(decoded))) {
        mg_http_serve_dir(connection, message, &options); // refuses it
        return;
    }
    // A slash that was encoded makes no folder: the library redirects to the plain one.
    if (path.back() == '/' && mg_match(message->uri, mg_str("#/"), nullptr)) {
        const std::string index = path + "index.html";
        if (IsFile(index)) {
            mg_http_serve_file(connection, message, index.c_str(), &options);
            return;
        }
        path += "index.shtml";
    }
    if (IsIncludePage(path) && IsFile(path))
        SendPage(connection, message, RenderIncludePage(path, webRoot));
    else
        mg_http_serve_dir(connection, message, &options);
}
