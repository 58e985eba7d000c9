// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string>

struct mg_connection;

// TLS 1.2 and up, for every connection or for none.

// Name and version of the TLS library; "none" in a build without one.
const char* TlsLibrary();

// Reads a certificate, with its chain behind it, and its private key, both PEM. Every connection
// that is accepted from then on is encrypted. Returns what is wrong with them, or an empty text.
std::string LoadTls(const std::string& certFile, const std::string& keyFile);

// Begins the handshake of a connection just accepted; does nothing when no certificate is loaded.
void BeginTls(mg_connection* connection);

// Tells the client that nothing follows, so that it can tell this end from one that an attacker
// made (RFC 8446, 6.1). Call it once everything is sent.
void EndTls(mg_connection* connection);
