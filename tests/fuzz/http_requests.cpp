// SPDX-License-Identifier: GPL-2.0-only
// The input is what one client sends. Its first byte's low bits say in pieces of how many bytes (0:
// in one), bit 6 that the recorder is slow, so that requests wait for each other, the high bit that
// the client then falls silent instead of closing.
#include <algorithm>
#include <mongoose.h>
#include <sys/socket.h>
#include <unistd.h>

#include "CBB/WebCtrl/Http/HttpConnection.h"
#include "CBB/WebCtrl/Http/HttpServer.h"
#include "tests/fuzz/Recorder.h"

namespace {

constexpr size_t kMaxPieces = 16;
constexpr int kMaxPolls = 10000; // no answers to so few bytes take so many
constexpr uint64_t kSilenceMs = 60000;
constexpr uint64_t kSlowMs = 1000;

uint64_t g_exchangeClock;

// A server with a listener that no one can find: it is bound to any free port.
mg_mgr* StartServer() {
    static QuietController controller;
    static HttpServer server(controller, [] { return g_exchangeClock; });
    controller.SetWebRoot(FUZZ_WEB_ROOT);
    Require(server.Listen(0));
    return server.Library();
}

// The newest connection stands first, the listener last.
mg_connection* Accepted(mg_mgr* server) {
    return server->conns->is_listening ? nullptr : server->conns;
}

// A client's end of a connection that the server has accepted.
int Connect(mg_mgr* server) {
    int ends[2];
    Require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends) == 0);
    const mg_connection* listener = server->conns;
    mg_connection* connection = mg_wrapfd(server, ends[0], listener->fn, listener->fn_data);
    connection->is_accepted = 1;
    mg_call(connection, MG_EV_ACCEPT, nullptr);
    return ends[1];
}

// Lets the server work until it waits for the client, and appends what it sent.
void Settle(mg_mgr* server, int client, std::string& answers) {
    mg_connection* connection;
    ssize_t received;
    int polls = 0;
    do {
        Require(++polls < kMaxPolls);
        mg_mgr_poll(server, 0);
        char bytes[16384];
        received = recv(client, bytes, sizeof(bytes), MSG_DONTWAIT);
        answers.append(bytes, received > 0 ? static_cast<size_t>(received) : 0);
        connection = Accepted(server);
    } while (received > 0 || (connection && (connection->send.len != 0 || connection->is_resp ||
                                             HttpConnection::Of(connection)->HasMore())));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static mg_mgr* const server = StartServer();
    if (size == 0)
        return 0;
    const uint64_t exchangeMs = (data[0] & 0x40) != 0 ? kSlowMs : 0;
    g_recorder = [exchangeMs](const std::string&) {
        g_exchangeClock += exchangeMs;
        return "<VariCfgSec Action=\"DEVICE_QUERY\" Result=\"1\"><stBaseInfo/></VariCfgSec>";
    };
    const int client = Connect(server);
    std::string answers;
    const size_t chosen = data[0] & 0x3F;
    const size_t piece = chosen == 0 ? size : std::max(chosen, size / kMaxPieces);
    for (size_t at = 1; at < size && Accepted(server) != nullptr; at += piece) {
        Require(send(client, data + at, std::min(piece, size - at), MSG_NOSIGNAL) > 0);
        Settle(server, client, answers);
    }
    // What is complete has been answered.
    g_recorder = [](const std::string&) -> std::string { __builtin_trap(); };
    const bool fallsSilent = (data[0] & 0x80) != 0;
    if (!fallsSilent)
        shutdown(client, SHUT_WR);
    for (int polls = 0; mg_connection* connection = Accepted(server); ++polls) {
        uint64_t now = mg_millis() + (fallsSilent ? kSilenceMs : 0);
        mg_call(connection, MG_EV_POLL, &now);
        mg_mgr_poll(server, 0);
        Require(polls < kMaxPolls);
    }
    close(client);
    mg_mgr_poll(server, 0); // a turn in which nothing happens ends the wait behind a slow exchange
    Require(answers.empty() || answers.compare(0, 9, "HTTP/1.1 ") == 0);
    // What a file beside the web root holds.
    Require(answers.find("webctrl_fuzz") == std::string::npos);
    return 0;
}
