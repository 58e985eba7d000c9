// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <string_view>

#include "CBB/Util/Console.h"

// A number in lower-case hexadecimal.
struct Hex {
    unsigned value;
};

// An address in network byte order, dotted.
struct Ipv4 {
    uint32_t address;
};

// A text that a client or the recorder sent. Printable makes it safe for a terminal.
struct Foreign {
    std::string_view text;
};

inline void PrintPiece(std::string_view text) {
    ConsoleAdd(text);
}
void PrintPiece(int value);
void PrintPiece(Hex number);
void PrintPiece(Ipv4 host);
void PrintPiece(Foreign foreign);

// Prints texts, integers, Hex, Ipv4 and Foreign one after the other. Every exchange prints half a
// dozen lines, and printf(3) takes eight times as long.
template <typename... Pieces>
void PrintLine(const Pieces&... pieces) {
    const ConsoleBatch line;
    (PrintPiece(pieces), ...);
}
