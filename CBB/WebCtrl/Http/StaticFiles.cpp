// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/StaticFiles.h"

#include <climits>
#include <mongoose.h>
#include <string>

#include "CBB/WebCtrl/Http/IncludePage.h"

namespace {

#define VARY "Vary: Accept-Encoding\r\n"

// No other site may frame a file, browsers take its type as told, and other sites are not told its
// address.
constexpr char kHeaders[] = VARY "X-Frame-Options: DENY\r\n"
                                 "Content-Security-Policy: frame-ancestors 'none'\r\n"
                                 "X-Content-Type-Options: nosniff\r\n"
                                 "Referrer-Policy: same-origin\r\n";
constexpr const char* kHeadersOfPlain = kHeaders + sizeof(VARY) - 1;

const char* HeadersOf(const std::string& path) {
    return IsFile(path + ".gz") ? kHeaders : kHeadersOfPlain;
}

void SendPage(mg_connection* connection, mg_http_message* message, const std::string& page) {
    mg_printf(connection,
              "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\n"
              "Content-Length: %lu\r\n%s\r\n",
              static_cast<unsigned long>(page.size()), kHeadersOfPlain);
    if (mg_strcasecmp(message->method, mg_str("HEAD")) != 0)
        mg_send(connection, page.data(), page.size());
    connection->is_resp = 0;
}

} // namespace

void ServeFile(mg_connection* connection, mg_http_message* message, const char* webRoot) {
    char decoded[PATH_MAX];
    if (mg_url_decode(message->uri.buf, message->uri.len, decoded, sizeof(decoded), 0) < 0) {
        // The library would look up an unterminated text: the part it could decode, and whatever
        // follows on the stack.
        mg_http_reply(connection, 400, "", "Invalid path\n");
        return;
    }
    mg_http_serve_opts options{}; // the library's defaults
    options.root_dir = webRoot;
    options.extra_headers = kHeadersOfPlain;
    std::string path = std::string(webRoot) + decoded;
    if (!mg_path_is_sane(mg_str(decoded))) {
        mg_http_serve_dir(connection, message, &options); // refuses it
        return;
    }
    // Only a plain `/` means a folder. For an encoded one the library redirects to the plain one.
    if (path.back() == '/' && mg_match(message->uri, mg_str("#/"), nullptr)) {
        const std::string index = path + "index.html";
        if (IsFile(index)) {
            options.extra_headers = HeadersOf(index);
            mg_http_serve_file(connection, message, index.c_str(), &options);
            return;
        }
        path += "index.shtml";
    }
    if (IsIncludePage(path) && IsFile(path)) {
        SendPage(connection, message, RenderIncludePage(path, webRoot));
        return;
    }
    options.extra_headers = HeadersOf(path);
    mg_http_serve_dir(connection, message, &options);
}
