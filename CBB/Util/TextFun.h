// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <netinet/in.h>

// What a text is, and small conversions. The tests return 1 or 0, and 0 for null.

// The host's first IPv4 address, in network byte order, through gethostbyname(3): 0, or -1 when the
// name has none. Its printed lines end in the two characters "/n".
int MyGetHostByName(const char* name, in_addr_t* addr);

// Digits and exactly three dots, no number above 255; a number may be missing ("1..2.").
int IsIpv4Text(const char* text);

// "0x" or "0X" and at least one hex digit, nothing else.
int IsHexText(const char* text);

// Digits only, after one "-" or none; also 1 for "" and "-".
int IsIntegerText(const char* text);

// The first character that is not a space, tab, line feed or carriage return; null without one.
const char* SkipBlanks(const char* text);

// The low 32 bits of what strtoll(3) reads in base 10, so the same on every machine: atoi's result
// where that is defined, 0 for a text that is no number.
int ToInt(const char* text);

// Writes the number's first six characters and a NUL into 7 bytes at text, and returns text.
char* IntToText(long value, char* text);
