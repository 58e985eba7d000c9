// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/HttpConnection.h"

#include <cstdint>
#include <cstring>
#include <mongoose.h>
#include <sys/socket.h>
#include <utility>

namespace {

// A browser opens six; a phone and a PC tool beside a page are far below this. Each costs up to
// 100 KiB while its request is incomplete.
constexpr int kMaxConnections = 128;
constexpr uint32_t kIdleMs = 30000;
// The largest form is below 4 KiB. The library is built to hold one read more than this.
constexpr size_t kMaxRequestBytes = 64 * 1024;
// A refused client may still be sending. Closing at once would reset the connection and take the
// refusal with it, so what comes is read and dropped for a moment.
constexpr uint32_t kLingerMs = 1000;

constexpr char kContinue[] = "HTTP/1.1 100 Continue\r\n\r\n";
constexpr char kBadRequest[] =
    "HTTP/1.1 400 Bad Request\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
constexpr char kTooLarge[] =
    "HTTP/1.1 413 Payload Too Large\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";

struct ConnectionState {
    uint32_t deadlineMs;   // closed when the library's clock, cut to 32 bits, passes it
    bool lastRequest;      // no request after the one in progress is answered
    bool continueAnswered; // to the request that is being received
    bool refused;          // what still comes is dropped
    bool waiting;          // for the answer to its request, which the server has kept
};

// While it sends a file the library keeps what is left of its length in the last word of the same
// bytes. Connections are allocated zeroed; `data` follows pointers and is aligned as they are.
static_assert(sizeof(ConnectionState) <=
              (MG_DATA_SIZE - sizeof(size_t)) / sizeof(size_t) * sizeof(size_t));
static_assert(alignof(ConnectionState) <= alignof(void*));

bool g_requestLies; // of the web thread alone

ConnectionState& StateOf(mg_connection* connection) {
    return *static_cast<ConnectionState*>(static_cast<void*>(connection->data));
}

void SetDeadline(mg_connection* connection, uint32_t afterMs) {
    StateOf(connection).deadlineMs = static_cast<uint32_t>(mg_millis()) + afterMs;
}

// Milliseconds past the deadline, negative before it.
int32_t Overdue(mg_connection* connection, uint64_t nowMs) {
    return static_cast<int32_t>(static_cast<uint32_t>(nowMs) - StateOf(connection).deadlineMs);
}

bool HasToken(mg_http_message* message, const char* header, const char* token) {
    const mg_str* value = mg_http_get_header(message, header);
    return value != nullptr && mg_strcasecmp(*value, mg_str(token)) == 0;
}

void MakeRoom(mg_connection* accepted) {
    int open = 0;
    mg_connection* idlest = accepted;
    const uint64_t nowMs = mg_millis();
    // The list has newer connections first.
    for (mg_connection* each = accepted->mgr->conns; each != nullptr; each = each->next) {
        if (each->is_listening || each->is_closing)
            continue;
        ++open;
        if (Overdue(each, nowMs) >= Overdue(idlest, nowMs))
            idlest = each;
    }
    if (open > kMaxConnections)
        idlest->is_closing = 1;
}

void Refuse(mg_connection* connection) {
    StateOf(connection).refused = true;
    SetDeadline(connection, kLingerMs);
    mg_send(connection, kTooLarge, sizeof(kTooLarge) - 1);
    connection->recv.len = 0;
    connection->pfn = nullptr;
}

void OnHeaders(mg_connection* connection, mg_http_message* message) {
    ConnectionState& state = StateOf(connection);
    const size_t buffered = connection->recv.len;
    const bool framed = mg_http_get_header(message, "Content-Length") != nullptr ||
                        mg_http_get_header(message, "Transfer-Encoding") != nullptr;
    if (!framed) {
        // The library takes such a request's length off twice when its method is POST or PUT, and
        // with it what is pipelined behind. Nothing here looks at the method but for HEAD.
        if (mg_strcasecmp(message->method, mg_str("HEAD")) != 0)
            message->method = mg_str("GET");
        return;
    }
    if (message->body.len > kMaxRequestBytes - message->head.len) {
        Refuse(connection);
        return;
    }
    if (!state.continueAnswered && HasToken(message, "Expect", "100-continue") &&
        message->head.len + message->body.len > buffered) {
        state.continueAnswered = true;
        mg_send(connection, kContinue, sizeof(kContinue) - 1);
    }
}

// Sends what was answered, and the first piece of a file behind its head, as the library would do a
// turn of its loop and three system calls later. What the socket does not take is left to it.
void SendAtOnce(mg_connection* connection) {
    // The library is about to send, and would take nothing sent for the connection's end.
    if (connection->is_writable || connection->is_closing)
        return;
    if (connection->pfn != nullptr)
        connection->pfn(connection, MG_EV_WRITE, nullptr);
    mg_iobuf& out = connection->send;
    long sent = out.len > 0 ? mg_io_send(connection, out.buf, out.len) : 0;
    if (sent <= 0)
        return;
    out.len -= static_cast<size_t>(sent);
    memmove(out.buf, out.buf + sent, out.len);
    mg_call(connection, MG_EV_WRITE, &sent);
}

void OnWrite(mg_connection* connection) {
    if (!StateOf(connection).refused)
        SetDeadline(connection, kIdleMs);
    // A file has ended. The library looks at the request behind it in its next turn.
    g_requestLies = g_requestLies || (!connection->is_resp && connection->recv.len > 0);
}

void OnRead(mg_connection* connection) {
    ConnectionState& state = StateOf(connection);
    if (state.refused) {
        connection->recv.len = 0;
        return;
    }
    SetDeadline(connection, kIdleMs);
    if (!connection->is_resp && !state.lastRequest) {
        if (connection->is_draining)
            mg_send(connection, kBadRequest, sizeof(kBadRequest) - 1);
        else if (connection->recv.len > kMaxRequestBytes)
            Refuse(connection);
    }
    SendAtOnce(connection);
}

void OnProgress(mg_connection* connection, uint64_t nowMs) {
    ConnectionState& state = StateOf(connection);
    if (state.waiting && connection->is_resp) {
        SetDeadline(connection, kIdleMs);
        connection->is_readable = 0;
    }
    if (state.refused && connection->send.len == 0)
        shutdown(static_cast<int>(reinterpret_cast<intptr_t>(connection->fd)), SHUT_WR);
    if (state.lastRequest && !connection->is_resp)
        connection->is_draining = 1;
    // A request may have come while another one's exchange held the thread: it is not idle.
    if (Overdue(connection, nowMs) > 0 && !connection->is_readable)
        connection->is_closing = 1;
}

} // namespace

void GuardConnection(mg_connection* connection, int event, void* eventData) {
    if (connection->is_listening)
        return;
    switch (event) {
    case MG_EV_ACCEPT:
        SetDeadline(connection, kIdleMs);
        MakeRoom(connection);
        break;
    case MG_EV_HTTP_HDRS:
        OnHeaders(connection, static_cast<mg_http_message*>(eventData));
        break;
    case MG_EV_READ:
        OnRead(connection);
        break;
    case MG_EV_WRITE:
        OnWrite(connection);
        break;
    case MG_EV_POLL:
        OnProgress(connection, *static_cast<uint64_t*>(eventData));
        break;
    default:
        break;
    }
}

bool AdmitRequest(mg_connection* connection, mg_http_message* message) {
    ConnectionState& state = StateOf(connection);
    // The library hands over what it has of a request when its connection ends. The rest of a
    // form would be written as empty.
    if (connection->is_closing || state.lastRequest || state.refused) {
        connection->is_resp = 0; // or the connection would wait for an answer instead of closing
        return false;
    }
    state.continueAnswered = false;
    state.waiting = false;
    state.lastRequest = HasToken(message, "Connection", "close") ||
                        mg_strcasecmp(message->proto, mg_str("HTTP/1.0")) == 0;
    return true;
}

void LetWait(mg_connection* connection) {
    StateOf(connection).waiting = true;
}

bool RequestLies() {
    return std::exchange(g_requestLies, false);
}
