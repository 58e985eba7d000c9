// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/PrintLine.h"

#include <charconv>
#include <cstring>

#include "CBB/Util/Printable.h"

namespace {

// A 32-bit number as text: at most a sign and ten digits.
template <typename Number>
class Digits {
public:
    Digits(Number value, int base)
        : m_end(std::to_chars(m_text, m_text + sizeof(m_text), value, base).ptr) {}
    std::string_view Text() const { return {m_text, static_cast<size_t>(m_end - m_text)}; }

private:
    char m_text[11];
    char* m_end;
};

} // namespace

void PrintPiece(int value) {
    PrintPiece(Digits(value, 10).Text());
}

void PrintPiece(Hex number) {
    PrintPiece(Digits(number.value, 16).Text());
}

void PrintPiece(Ipv4 host) {
    uint8_t bytes[sizeof(host.address)];
    memcpy(bytes, &host.address, sizeof(bytes));
    const char* before = "";
    for (const uint8_t byte : bytes) {
        PrintPiece(before);
        PrintPiece(int{byte});
        before = ".";
    }
}

void PrintPiece(Foreign foreign) {
    if (IsPrintable(foreign.text))
        PrintPiece(foreign.text);
    else
        PrintPiece(Printable(foreign.text));
}
