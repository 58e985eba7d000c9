// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string>
#include <string_view>
#include <vector>

// One who may log in.
struct Account {
    std::string name;
    std::string hash; // as crypt(3) makes it, its setting in front
    bool mayWrite;
};

// Whether a text has control characters, which neither name nor password may hold (RFC 7617, 2).
bool HasControl(std::string_view text);

// Reads the text of a login file into `*accounts`: `NAME:HASH` a line, with `:read` behind it for a
// name that may not write; empty lines are passed over. A name is UTF-8 without control characters
// and stands once; a hash is yescrypt's ($y$), SHA-512's ($6$) or bcrypt's ($2a$, $2b$, $2y$).
// Returns what is wrong with the text, or an empty text; only then `*accounts` has changed.
std::string ParseLoginFile(std::string_view text, std::vector<Account>* accounts);

// Does the same for a regular file of at most 64 KiB that only its owner and group may read or
// write.
std::string ReadLoginFile(const std::string& path, std::vector<Account>* accounts);
