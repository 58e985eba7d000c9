// SPDX-License-Identifier: GPL-2.0-only
// The floor: the least that the same answer can cost. The bare HTTP library sends the query on a
// socket that stays open, does not read the reply, and answers fixed values. Every other path is
// a file that the library serves.
//
//   bench_floor PORT RECORDER_IP:PORT FOLDER
#include <mongoose.h>

#include "bench/Endpoint.h"

namespace {

constexpr char kQuery[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stBaseInfo></VariCfgSec>";

int g_recorder = -1;
const char* g_folder = nullptr;

// One chunk a member, with the lengths of the sample state's values.
void AnswerBaseInfo(mg_connection* connection) {
    char reply[1024];
    const bool answered = send(g_recorder, kQuery, sizeof(kQuery) - 1, 0) > 0 &&
                          recv(g_recorder, reply, sizeof(reply), 0) > 0;
    mg_printf(connection, "%s", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
    mg_http_printf_chunk(connection, "{ \"strFD_DeviceNo\": \"%s\"", "DEMO100234");
    mg_http_printf_chunk(connection, ", \"ucFD_TimeZone\": \"%d\" ", 20);
    mg_http_printf_chunk(connection, ", \"ucFD_GpsSTFlag\": \"%d\"", 1);
    mg_http_printf_chunk(connection, ", \"strFD_CurTime\": \"%s\"", "2026-03-14 15:09:26");
    mg_http_printf_chunk(connection, ", \"result\": %d }", answered ? 1 : 0);
    mg_http_write_chunk(connection, "", 0);
}

void OnEvent(mg_connection* connection, int event, void* data) {
    if (event != MG_EV_HTTP_MSG)
        return;
    auto* message = static_cast<mg_http_message*>(data);
    if (mg_strcmp(message->uri, mg_str("/get_BaseInfo")) == 0) {
        AnswerBaseInfo(connection);
        return;
    }
    mg_http_serve_opts options{};
    options.root_dir = g_folder;
    mg_http_serve_dir(connection, message, &options);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        fprintf(stderr, "usage: bench_floor PORT RECORDER_IP:PORT FOLDER\n");
        return 2;
    }
    const sockaddr_in recorder = Endpoint(argv[2]);
    const timeval patience{5, 0};
    g_recorder = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    setsockopt(g_recorder, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    g_folder = argv[3];

    mg_mgr manager;
    mg_mgr_init(&manager);
    const std::string url = std::string("http://0.0.0.0:") + argv[1];
    if (connect(g_recorder, Generic(recorder), sizeof(recorder)) != 0 ||
        mg_http_listen(&manager, url.c_str(), OnEvent, nullptr) == nullptr) {
        perror("bench_floor");
        return 1;
    }
    for (;;)
        mg_mgr_poll(&manager, 1000);
}
