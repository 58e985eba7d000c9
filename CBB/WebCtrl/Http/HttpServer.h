// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <climits>
#include <cstdint>
#include <memory>
#include <vector>

#include "CBB/WebCtrl/Http/ExchangeQueue.h"

class CWebCtrl;
class HttpConnection;
struct mg_connection;
struct mg_http_message;
struct mg_mgr;

// The HTTP server: the library's loop and its state between two turns. Everything runs on the
// caller's thread.
class HttpServer {
public:
    // Milliseconds that never go back.
    using Clock = uint64_t (*)();

    // @param clock measures how long exchanges take
    explicit HttpServer(CWebCtrl& controller, Clock clock);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    // Listens on a TCP port (IPv4, host order). If the port is taken, prints a line on standard
    // error and returns false.
    bool Listen(uint16_t port);
    // One turn: waits at most 1 s for something to do, and does it.
    void Turn();
    // Leaves the listening socket open for the rest of the process, unserved.
    void Abandon();

    // The library's loop, for tests that bring connections of their own.
    mg_mgr* Library() { return m_library.get(); }

private:
    friend void HttpEventHandler(mg_connection* connection, int event, void* eventData);

    void OnEvent(HttpConnection& connection, int event, uint64_t nowMs);
    void OnListenerTurn(mg_connection* listener);
    void QueueHandshake(mg_connection* connection);
    void TakeRequests(HttpConnection& connection);
    bool TakeRequest(HttpConnection& connection, mg_http_message& message);
    bool PassesLogin(HttpConnection& connection, mg_http_message& message);
    void TakeLoggingIn();
    void Answer(HttpConnection& connection, mg_http_message& message);
    HttpConnection* Resume(unsigned long connectionId, mg_http_message& message);
    void AnswerWaiting(unsigned long connectionId);
    bool MakeRoom(mg_connection* listener);
    void GiveMemoryBack(bool resting);

    CWebCtrl& m_controller;
    const Clock m_clock;
    std::unique_ptr<mg_mgr> m_library;
    ExchangeQueue m_queue;
    std::vector<unsigned long> m_loggingIn;    // connections whose request waits for a hash
    unsigned long m_handshake = ULONG_MAX;     // the connection that may go on with it in this turn
    unsigned long m_nextHandshake = ULONG_MAX; // and in the next one
    int m_maxConnections;
    bool m_served = false;    // some client was served in this turn
    bool m_hasMore = false;   // a received request was left for the next turn
    bool m_isCrowded = false; // a new client waits for room
    bool m_trimmed = false;   // the free memory was given back, and no client was served since
};

// Serves the controller's web root on its web port, on the calling thread alone, for ever.
// Returns -1, with a line on standard error, when the port is taken or there is no web root; in
// the second case the listening socket stays open.
int RunWebServer(CWebCtrl& controller);

// The HTTP library's handler of the listener and of every connection that it accepts.
// @param event     one of the library's MG_EV_ numbers
// @param eventData the event's data, as the library documents it
void HttpEventHandler(mg_connection* connection, int event, void* eventData);
