// SPDX-License-Identifier: GPL-2.0-only
// From an attribute's text to a record field. What cannot be read as a number is 0; a number too
// large for its field keeps its low bits; texts are cut silently. Every Store... returns 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

int Store(const char* text, uint8_t* field);
int Store(const char* text, uint16_t* field);
int Store(const char* text, uint32_t* field);
int Store(const char* text, float* field); // always finite: clamped to the type's range

// At most N - 1 characters, the rest of the field cleared.
template <size_t N>
int Store(const char* text, char (*field)[N]) {
    strncpy(*field, text, N - 1);
    (*field)[N - 1] = '\0';
    return 0;
}

// At most N characters, so that a text of N or more leaves the field without a terminating NUL.
template <size_t N>
int StoreFull(const char* text, char (*field)[N]) {
    strncpy(*field, text, N);
    return 0;
}

// An IPv4 address given as "1.2.3.4" (stored in network byte order, by the rules of inet_addr(3)
// for its groups), or as a number, "0x..." or decimal, stored as it is. The empty text is 0.
// Result: 0, or -1 for any other text, which leaves *address alone.
int ParseAddress(const char* text, uint32_t* address);

// The same, where any other text is passed over.
int StoreAddress(const char* text, uint32_t* field);
