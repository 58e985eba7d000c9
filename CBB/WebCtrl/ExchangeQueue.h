// SPDX-License-Identifier: GPL-2.0-only
#pragma once

struct mg_connection;
struct mg_http_message;
struct mg_mgr;

// API requests wait here for their exchange with the recorder, which holds the thread for seconds
// when the recorder is silent. After a long one all other clients are served before the next.

/// Keeps an admitted request. Its connection gives no further one until it is answered.
void QueueExchange(mg_connection* connection, mg_http_message* message);

/// Whether any request waits; the loop must not rest then.
bool ExchangesWait();

/// Answers waiting requests in the order in which they came, through CWebCtrl::DoHttpRequest. To be
/// called in each turn of the library's loop, behind all connections.
/// @param othersServed whether anything came or went since the last turn, so that there may be more
void ServeExchanges(mg_mgr* manager, bool othersServed);
