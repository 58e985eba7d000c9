// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>

// Hex digits of both cases, the high nibble first; length counts digits. An odd last digit is the
// high nibble of a byte whose low nibble is 0: nothing is read past the length given.

// Converts to bytes, for which *capacity bytes have room, and sets *capacity to their count,
// (length - 1) / 2 + 1, 0 for a length of 0 or less. Returns 0, or -1 when the capacity is below
// length / 2 or a character is not a hex digit. With an odd length and room for length / 2 bytes
// only, the last digit is left out.
int HexTextToBytes(const char* text, int length, uint8_t* bytes, int* capacity);

// Returns 0 and the number, modulo 2^32, or -1 at a character that is not a hex digit; *value then
// holds the digits before it at the places that the length gives them.
int HexTextToInt(const char* text, int length, int* value);

// Converts up to the first character that is not a hex digit and returns the count of bytes
// written; bytes must have room for (length + 1) / 2.
int HexPairsToBytes(uint8_t* bytes, const char* text, int length);
