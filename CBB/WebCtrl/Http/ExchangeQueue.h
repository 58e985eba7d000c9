// SPDX-License-Identifier: GPL-2.0-only
#pragma once

struct mg_connection;
struct mg_http_message;
struct mg_mgr;

// API requests wait here for their exchange with the recorder, which holds the thread for seconds
// when the recorder is silent. After a long one all other clients are served before the next.

/// Answers an admitted request through CWebCtrl::DoHttpRequest; at once, or, behind others or a
/// long exchange, when it is its turn. Its connection gives no further one until then.
void AnswerInTurn(mg_connection* connection, mg_http_message* message);

/// Whether any request waits; the loop must not rest then.
bool ExchangesWait();

/// Answers waiting requests in the order in which they came. To be called in each turn of the
/// library's loop, behind all connections.
/// @param othersServed whether anything came or went since the last turn, so that there may be more
void ServeExchanges(mg_mgr* manager, bool othersServed);
