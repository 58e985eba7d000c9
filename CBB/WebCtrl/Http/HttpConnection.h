// SPDX-License-Identifier: GPL-2.0-only
#pragma once

struct mg_connection;
struct mg_http_message;

// What the server asks of each connection before and after its requests: limits on number, idle
// time and request size, and the ends of HTTP that the library leaves to its user (RFC 9112).

/// Handles every library event but MG_EV_HTTP_MSG:
/// - accepted: beyond 128 connections the one idle for longest is closed;
/// - headers complete: `Expect: 100-continue` is answered, a request over 64 KiB is refused with
///   413 and closed;
/// - received: what has been answered by then is sent, as far as the socket takes it;
/// - nothing received or sent for 30 s: closed.
void GuardConnection(mg_connection* connection, int event, void* eventData);

/// Whether a request is to be answered: not one that broke off, nor one that follows the last one
/// to be answered here. Marks the connection for closing after an HTTP/1.0 request or one with
/// `Connection: close`.
bool AdmitRequest(mg_connection* connection, mg_http_message* message);

/// To be called for an admitted request that is answered after its event. Until then the connection
/// is neither read nor closed for idling.
void LetWait(mg_connection* connection);

/// Whether a request has lain received since the last call, behind one that has been answered now;
/// the loop must not rest then.
bool RequestLies();
