// SPDX-License-Identifier: GPL-2.0-only
// From an attribute's text to a record field. What cannot be read as a number is 0; a number too
// large for its field keeps its low bits; texts are cut silently. Every Store... returns 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// What C's atoi gives where it is defined; beyond, the low 32 bits of strtol(3)'s result.
int ToInt(const char* text);

int Store(const char* text, std::uint8_t* field);
int Store(const char* text, std::uint16_t* field);
int Store(const char* text, std::uint32_t* field);
int Store(const char* text, float* field); // always finite: clamped to the type's range

// At most N - 1 characters, the rest of the field cleared.
template <std::size_t N>
int Store(const char* text, char (*field)[N]) {
    std::strncpy(*field, text, N - 1);
    (*field)[N - 1] = '\0';
    return 0;
}

// At most N characters, so that a text of N or more leaves the field without a terminating NUL.
template <std::size_t N>
int StoreFull(const char* text, char (*field)[N]) {
    std::strncpy(*field, text, N);
    return 0;
}

// An IPv4 address as CConfig_Task::ParseAddress reads it; any other text changes nothing.
int StoreAddress(const char* text, std::uint32_t* field);
