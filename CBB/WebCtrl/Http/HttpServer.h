// SPDX-License-Identifier: GPL-2.0-only
#pragma once

struct mg_connection;

/// Serves HTTP on the controller's web port, IPv4, and on the calling thread alone, for ever.
/// Returns -1, with a line on standard error, when the port is taken or there is no `webRoot`; in
/// the second case the listening socket stays open.
int RunWebServer(const char* webRoot);

/// The HTTP library's handler of the listener and of every connection that it accepts.
/// @param event     one of the library's MG_EV_ numbers
/// @param eventData what the library says of that event
void HttpEventHandler(mg_connection* connection, int event, void* eventData);
