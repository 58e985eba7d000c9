// SPDX-License-Identifier: GPL-2.0-only
#pragma once

struct mg_connection;
struct mg_http_message;

// Answers a request for a file below `webRoot`: an include page rendered, every other as the
// library serves it. A folder means its index.html, else its index.shtml. Every file carries the
// headers that keep other sites' pages from framing it, and Vary where it has a compressed copy.
void ServeFile(mg_connection* connection, mg_http_message* message, const char* webRoot);
