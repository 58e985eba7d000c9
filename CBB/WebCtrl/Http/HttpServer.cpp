// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/HttpServer.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <malloc.h>
#include <mongoose.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <utility>

#include "CBB/Util/Console.h"
#include "CBB/WebCtrl/Http/HttpConnection.h"
#include "CBB/WebCtrl/Http/LoginGuard.h"
#include "CBB/WebCtrl/Http/Routes.h"
#include "CBB/WebCtrl/Http/Tls.h"
#include "CBB/WebCtrl/PrintLine.h"
#include "CBB/WebCtrl/WebCtrl.h"

namespace {

constexpr int kPollMs = 1000;
// The longest wait while a new client waits for room.
constexpr int kCrowdedPollMs = 50;
// The longest wait while a login's hash is being made, which takes tens of milliseconds at least.
constexpr int kHashingPollMs = 5;
// At most so many requests of one connection, or one exchange, at one event: others have theirs
// too.
constexpr int kRequestsATurn = 16;
// A browser opens six connections, so a page, a phone and a PC tool stay far below. A connection
// costs up to 100 KiB while its client does not read the answers.
constexpr int kMaxConnections = 128;
// A connection may have a file open beside its socket.
constexpr int kDescriptorsAConnection = 2;
// For an exchange's socket, a page with its included files, and the listener of a second start.
constexpr int kSpareDescriptors = 10;
// A connection is not closed for a new client this soon after its answer: its own client may be
// sending the next request.
constexpr uint64_t kUndisturbedMs = 250;

int CountDescriptors() {
    int count = 0;
    if (DIR* folder = opendir("/proc/self/fd")) {
        while (readdir(folder) != nullptr)
            ++count;
        closedir(folder);
    }
    return count;
}

int ConnectionLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return kMaxConnections;
    const int left = static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 4096)) - CountDescriptors() -
                     kSpareDescriptors;
    return std::clamp(left / kDescriptorsAConnection, 1, kMaxConnections);
}

} // namespace

HttpServer::HttpServer(CWebCtrl& controller, Clock clock)
    : m_controller(controller), m_clock(clock), m_library(std::make_unique<mg_mgr>()),
      m_maxConnections(ConnectionLimit()) {
    mg_mgr_init(m_library.get());
}

HttpServer::~HttpServer() {
    if (m_library != nullptr)
        mg_mgr_free(m_library.get());
}

bool HttpServer::Listen(uint16_t port) {
    const std::string url = "http://0.0.0.0:" + std::to_string(port);
    mg_connection* listener = mg_http_listen(m_library.get(), url.c_str(), HttpEventHandler, this);
    if (listener == nullptr) {
        ConsoleWriteError("Cannot bind to " + std::to_string(port) + "\n");
        return false;
    }
    listener->pfn = nullptr; // requests are read by RequestGate alone
    return true;
}

void HttpServer::Abandon() {
    [[maybe_unused]] const mg_mgr* abandoned = m_library.release();
}

void HttpServer::Turn() {
    const bool busy = std::exchange(m_hasMore, false) || m_queue.IsWaitedFor();
    const int restMs = IsLoginHashing() ? kHashingPollMs : m_isCrowded ? kCrowdedPollMs : kPollMs;
    const ConsoleBatch lines; // are written while the clients have their answers already
    mg_mgr_poll(m_library.get(), busy ? 0 : restMs);
}

void HttpServer::OnEvent(HttpConnection& connection, int event, uint64_t nowMs) {
    if (event == MG_EV_POLL)
        QueueHandshake(connection.Library());
    connection.OnEvent(event, nowMs);
    if (event == MG_EV_READ || event == MG_EV_POLL)
        TakeRequests(connection);
    m_hasMore = m_hasMore || connection.HasMore();
}

// One step of a handshake is milliseconds of arithmetic. Other clients are served before the next
// step, which belongs to the oldest connection.
void HttpServer::QueueHandshake(mg_connection* connection) {
    if (!connection->is_tls_hs || !connection->is_readable || connection->id == m_handshake)
        return;
    connection->is_readable = 0;
    m_nextHandshake = std::min(m_nextHandshake, connection->id);
}

void HttpServer::TakeRequests(HttpConnection& connection) {
    mg_http_message message;
    for (int taken = 0; taken < kRequestsATurn && connection.NextRequest(message); ++taken)
        if (!TakeRequest(connection, message))
            return;
}

// Whether the connection may give another request in this turn.
bool HttpServer::TakeRequest(HttpConnection& connection, mg_http_message& message) {
    if (!PassesLogin(connection, message))
        return true;
    if (!AsksRecorder(message.uri)) {
        Answer(connection, message);
        return true;
    }
    const uint64_t startMs = m_clock();
    if (m_queue.IsFree(startMs)) {
        Answer(connection, message);
        m_queue.Made(startMs, m_clock());
    } else if (m_queue.Enter(connection.Id())) {
        connection.LetWait();
    } else {
        connection.Refuse(503, "Too many requests wait for the recorder", "Retry-After: 1\r\n");
    }
    return false;
}

bool HttpServer::PassesLogin(HttpConnection& connection, mg_http_message& message) {
    uint32_t address;
    memcpy(&address, &connection.Library()->rem.addr, sizeof(address));
    const LoginRuling ruling = RuleOnLogin(message, address, m_clock());
    switch (ruling.verdict) {
    case LoginRuling::Verdict::Go:
        return true;
    case LoginRuling::Verdict::Wait:
        m_loggingIn.push_back(connection.Id());
        connection.LetWait();
        return false;
    case LoginRuling::Verdict::Refuse:
        connection.Answer(message, [&] {
            mg_http_reply(connection.Library(), ruling.status, ruling.headers.c_str(), "%s\n",
                          ruling.reason);
        });
        return false;
    }
    return false;
}

// The hash that these waited for is there.
void HttpServer::TakeLoggingIn() {
    for (const unsigned long id : std::exchange(m_loggingIn, {})) {
        mg_http_message message;
        HttpConnection* connection = Resume(id, message);
        if (connection != nullptr)
            TakeRequest(*connection, message);
    }
}

void HttpServer::Answer(HttpConnection& connection, mg_http_message& message) {
    connection.Answer(message, [&] { m_controller.DoHttpRequest(connection.Library(), &message); });
}

// Gives the request of a connection that waits; null when its client is gone.
HttpConnection* HttpServer::Resume(unsigned long connectionId, mg_http_message& message) {
    mg_connection* each = m_library->conns;
    while (each != nullptr && each->id != connectionId)
        each = each->next;
    HttpConnection* connection = each != nullptr ? HttpConnection::Of(each) : nullptr;
    return connection != nullptr && connection->ResumeRequest(message) ? connection : nullptr;
}

void HttpServer::AnswerWaiting(unsigned long connectionId) {
    mg_http_message message;
    HttpConnection* connection = Resume(connectionId, message);
    if (connection != nullptr)
        Answer(*connection, message);
}

// Whether one more client can be served. If there are too many, the idle connection that was served
// longest ago is closed.
bool HttpServer::MakeRoom(mg_connection* listener) {
    int open = 0;
    HttpConnection* idlest = nullptr;
    for (mg_connection* each = listener->mgr->conns; each != nullptr; each = each->next) {
        HttpConnection* connection = HttpConnection::Of(each);
        if (each->is_listening || each->is_closing || connection == nullptr)
            continue;
        ++open;
        if (connection->IsIdle() &&
            (idlest == nullptr || connection->ServedAtMs() < idlest->ServedAtMs()))
            idlest = connection;
    }
    if (open < m_maxConnections)
        return true;
    if (idlest == nullptr || mg_millis() - idlest->ServedAtMs() < kUndisturbedMs)
        return false;
    idlest->Library()->is_closing = 1;
    return true;
}

// The listener is last in the library's list, so its POLL ends a turn.
void HttpServer::OnListenerTurn(mg_connection* listener) {
    m_handshake = std::exchange(m_nextHandshake, ULONG_MAX);
    m_isCrowded = (listener->is_readable || m_isCrowded) && !MakeRoom(listener);
    listener->is_full = m_isCrowded;
    if (m_isCrowded)
        listener->is_readable = 0;
    // A client that is about to be accepted counts as served: so its request is read before the
    // next exchange.
    const bool served = std::exchange(m_served, false) || listener->is_readable;
    GiveMemoryBack(!served && !m_queue.IsWaitedFor());
    if (LoginHashEnded(m_clock())) {
        TakeLoggingIn();
        ForgetRefusedLogin();
    }
    m_queue.Serve(served, [this](unsigned long id) { AnswerWaiting(id); }, m_clock);
}

// After a burst of clients the freed memory goes back to the recorder.
void HttpServer::GiveMemoryBack(bool resting) {
#ifdef __GLIBC__
    if (resting && !m_trimmed)
        malloc_trim(0);
#endif
    m_trimmed = resting;
}

void HttpEventHandler(mg_connection* connection, int event, void* eventData) {
    auto& server = *static_cast<HttpServer*>(connection->fn_data);
    // Any event but POLL is traffic.
    if (event != MG_EV_POLL)
        server.m_served = true;
    if (connection->is_listening) {
        if (event == MG_EV_POLL)
            server.OnListenerTurn(connection);
        return;
    }
    if (event == MG_EV_ACCEPT) {
        if (HttpConnection::Open(connection, mg_millis()) != nullptr)
            BeginTls(connection);
        return;
    }
    HttpConnection* opened = HttpConnection::Of(connection);
    if (opened == nullptr)
        return;
    if (event == MG_EV_CLOSE) {
        server.m_queue.Leave(connection->id);
        opened->Close();
    } else {
        const uint64_t nowMs =
            event == MG_EV_POLL ? *static_cast<uint64_t*>(eventData) : mg_millis();
        server.OnEvent(*opened, event, nowMs);
    }
}

int RunWebServer(CWebCtrl& controller) {
    HttpServer server(controller, mg_millis);
    if (!server.Listen(controller.WebPort()))
        return -1;
    struct stat status;
    if (stat(controller.WebRoot(), &status) != 0) {
        ConsoleWriteError("Cannot find web_root directory, exiting\n");
        server.Abandon();
        return -1;
    }
    PrintLine("Starting web server on port ", controller.WebPort(), "\n");
    for (;;)
        server.Turn();
}
