// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/HttpConnection.h"

#include <cerrno>
#include <cstring>
#include <mongoose.h>
#include <new>
#include <string_view>
#include <sys/socket.h>

#include "CBB/WebCtrl/Http/ChunkedBody.h"
#include "CBB/WebCtrl/Http/RequestGate.h"
#include "CBB/WebCtrl/Http/Tls.h"

namespace {

constexpr uint64_t kIdleMs = 30000;
// A refused client may still be sending. Closing at once would reset the connection and take the
// refusal with it, so what comes is read and dropped for a moment.
constexpr uint64_t kLingerMs = 1000;
// With more than this unsent, no request of the connection is read or answered. The answer that
// passes the limit is at most as long again, so that at most 64 KiB lie unsent; with an include
// page, 256 KiB more.
constexpr size_t kMaxUnsentBytes = 32 * 1024;

constexpr char kContinue[] = "HTTP/1.1 100 Continue\r\n\r\n";

int Socket(const mg_connection* connection) {
    return static_cast<int>(reinterpret_cast<intptr_t>(connection->fd));
}

std::string_view Received(const mg_connection* connection) {
    return {reinterpret_cast<const char*>(connection->recv.buf), connection->recv.len};
}

} // namespace

HttpConnection::HttpConnection(mg_connection* connection, uint64_t nowMs)
    : m_connection(connection), m_deadlineMs(nowMs + kIdleMs), m_servedAtMs(nowMs) {}

HttpConnection* HttpConnection::Open(mg_connection* connection, uint64_t nowMs) {
    auto* opened = new (std::nothrow) HttpConnection(connection, nowMs);
    static_assert(sizeof(HttpConnection*) <= MG_DATA_SIZE - 2 * sizeof(size_t),
                  "a file's length follows");
    memcpy(connection->data, &opened, sizeof(HttpConnection*));
    connection->is_closing = opened == nullptr;
    return opened;
}

HttpConnection* HttpConnection::Of(mg_connection* connection) {
    HttpConnection* opened;
    memcpy(&opened, connection->data, sizeof(HttpConnection*));
    return opened;
}

void HttpConnection::Close() {
    delete this;
}

unsigned long HttpConnection::Id() const {
    return m_connection->id;
}

bool HttpConnection::IsIdle() const {
    return !m_connection->is_resp && m_connection->send.len == 0;
}

bool HttpConnection::HasMore() const {
    return !m_connection->is_resp && !m_last && !m_connection->is_closing &&
           m_connection->send.len < kMaxUnsentBytes && m_connection->recv.len >= m_wantedBytes;
}

bool HttpConnection::NextRequest(mg_http_message& message) {
    if (!HasMore())
        return false;
    const RequestFrame frame = LookAtRequest(Received(m_connection), message);
    m_isHead = frame.isHead;
    switch (frame.verdict) {
    case RequestFrame::Verdict::Go:
        break;
    case RequestFrame::Verdict::Refuse:
        Refuse(frame.status, frame.reason);
        return false;
    case RequestFrame::Verdict::Wait:
        m_wantedBytes =
            frame.bytes > m_connection->recv.len ? frame.bytes : m_connection->recv.len + 1;
        if (frame.wantsContinue) // once: it is asked again only with a part of the body
            mg_send(m_connection, kContinue, sizeof(kContinue) - 1);
        return false;
    }
    m_requestBytes = frame.bytes;
    m_chunked = frame.chunked;
    m_last = frame.closes;
    m_wantedBytes = 1;
    m_connection->is_resp = 1;
    return true;
}

bool HttpConnection::ResumeRequest(mg_http_message& message) {
    m_waits = false;
    return !m_connection->is_closing &&
           LookAtRequest(Received(m_connection), message).verdict == RequestFrame::Verdict::Go;
}

void HttpConnection::BeginAnswer(mg_http_message& message) {
    m_answerAt = m_connection->send.len;
    if (m_chunked)
        message.body.len = JoinChunks(message.body.buf, message.body.len);
}

void HttpConnection::EndAnswer() {
    mg_iobuf& out = m_connection->send;
    if (m_isHead && !m_connection->is_resp) {
        const std::string_view unsent(reinterpret_cast<const char*>(out.buf), out.len);
        const size_t headEnd = unsent.find("\r\n\r\n", m_answerAt);
        if (headEnd != std::string_view::npos)
            out.len = headEnd + 4;
    }
    mg_iobuf_del(&m_connection->recv, 0, m_requestBytes);
    m_requestBytes = 0;
    SendAtOnce();
    Settle();
}

void HttpConnection::Refuse(int status, const char* reason, const char* headers) {
    char allHeaders[128];
    mg_snprintf(allHeaders, sizeof(allHeaders), "Connection: close\r\n%s", headers);
    m_answerAt = m_connection->send.len;
    m_last = true;
    mg_http_reply(m_connection, status, allHeaders, "%s\n", reason);
    EndAnswer();
}

void HttpConnection::OnEvent(int event, uint64_t nowMs) {
    // The end of a file: the library has put its own reader of requests back.
    if (!m_connection->is_resp)
        m_connection->pfn = nullptr;
    switch (event) {
    case MG_EV_READ:
        if (!m_drops)
            m_deadlineMs = nowMs + kIdleMs;
        break;
    case MG_EV_WRITE:
        m_servedAtMs = nowMs;
        m_deadlineMs = nowMs + kIdleMs;
        break;
    case MG_EV_POLL:
        OnTurn(nowMs);
        break;
    default:
        return;
    }
    Settle();
}

void HttpConnection::OnTurn(uint64_t nowMs) {
    // Once TLS has bytes at hand the library reads on, whether there is room for them or not.
    if (m_connection->is_tls &&
        (m_connection->is_full || m_connection->recv.len >= kMaxRequestBytes))
        m_connection->is_readable = 0;
    if (m_connection->is_readable)
        LookForEnd();
    if (m_waits)
        m_deadlineMs = nowMs + kIdleMs;
    // A readable connection is not idle: its request may have come while an exchange held the
    // thread. But what a refused client sends does not count.
    if (nowMs > m_deadlineMs && (m_drops || !m_connection->is_readable))
        m_connection->is_closing = 1;
}

// When a client closes its side, the library closes the connection at once and loses the answers
// that are not sent yet. So the library is not shown that end before everything is sent.
void HttpConnection::LookForEnd() {
    if (m_connection->is_tls || (IsIdle() && !HasMore()))
        return;
    char byte;
    const ssize_t peeked = recv(Socket(m_connection), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    m_inputEnded = peeked == 0;
    if (m_waits && (peeked == 0 || (peeked < 0 && errno != EAGAIN)))
        m_connection->is_closing = 1; // there is nobody left to answer
    if (m_waits || m_inputEnded)
        m_connection->is_readable = 0;
}

// Sends the answer, and of a file the first piece behind its head. The library would do so one turn
// of its loop and three system calls later; it still sends what the socket does not take here.
void HttpConnection::SendAtOnce() {
    // The library is about to send, and would take an empty buffer for the connection's end.
    if (m_connection->is_writable || m_connection->is_closing || m_connection->is_tls)
        return;
    if (m_connection->pfn != nullptr)
        m_connection->pfn(m_connection, MG_EV_WRITE, nullptr);
    mg_iobuf& out = m_connection->send;
    long sent = out.len > 0 ? mg_io_send(m_connection, out.buf, out.len) : 0;
    if (sent <= 0)
        return;
    out.len -= static_cast<size_t>(sent);
    memmove(out.buf, out.buf + sent, out.len);
    mg_call(m_connection, MG_EV_WRITE, &sent);
}

// Decides from the state of the connection whether it is read on and whether it ends.
void HttpConnection::Settle() {
    const bool answered = !m_connection->is_resp && m_connection->send.len == 0;
    // Nothing behind the last request is kept, however long its answer lies unsent.
    m_drops = m_drops || (m_last && !m_connection->is_resp && m_connection->recv.len > 0);
    if (m_drops)
        m_connection->recv.len = 0;
    m_connection->is_full = m_inputEnded || (m_connection->is_resp && !m_waits) ||
                            m_connection->send.len >= kMaxUnsentBytes;
    if (!answered)
        return;
    if (m_drops && !m_shut) {
        m_shut = true;
        EndTls(m_connection);
        m_deadlineMs = mg_millis() + kLingerMs;
        shutdown(Socket(m_connection), SHUT_WR);
    } else if (!m_drops && (m_last || (m_inputEnded && !HasMore()))) {
        EndTls(m_connection);
        m_connection->is_closing = 1;
    }
}
