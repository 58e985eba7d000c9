// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Printable.h"

#include <algorithm>
#include <iterator>

#include "CBB/Util/PlainText.h"

namespace {

constexpr char kBlanks[] = " \t\r\n";
constexpr std::string_view kSecretWords[] = {"pass", "pwd", "key"};

bool g_masked = false;

bool IsPlain(char each) {
    return static_cast<unsigned char>(each - ' ') < 0x7F - ' ';
}

bool IsC1(unsigned char byte) {
    return byte >= 0x80 && byte < 0xA0;
}

// C0, DEL, and C1 both as it stands and in UTF-8, behind 0xC2; behind other bytes above 0x7F its
// codes are parts of characters.
bool IsControl(std::string_view text, size_t at) {
    const auto byteAt = [text](size_t place) {
        return static_cast<unsigned char>(place < text.size() ? text[place] : 0);
    };
    const unsigned char byte = byteAt(at);
    const unsigned char before = byteAt(at - 1);
    return byte < 0x20 || byte == 0x7F || (byte == 0xC2 && IsC1(byteAt(at + 1))) ||
           (IsC1(byte) && (before < 0x80 || before == 0xC2));
}

bool NamesSecret(std::string_view text) {
    // The words are of lower-case letters, to which bit 5 leads.
    const auto same = [](char each, char letter) { return (each | 0x20) == letter; };
    return std::any_of(std::begin(kSecretWords), std::end(kSecretWords), [&](auto word) {
        return std::search(text.begin(), text.end(), word.begin(), word.end(), same) != text.end();
    });
}

// The name that ends before the equals sign at `equals`.
std::string_view NameBefore(std::string_view text, size_t equals) {
    std::string_view name = text.substr(0, equals);
    name = name.substr(0, name.find_last_not_of(kBlanks) + 1);
    return name.substr(name.find_last_of(" \t\r\n\"'<>/?&=") + 1);
}

// The value behind the equals sign, without its quotes; one without an end is all that follows.
std::string_view ValueBehind(std::string_view text, size_t equals) {
    const size_t begin = std::min(text.find_first_not_of(kBlanks, equals + 1), text.size());
    const std::string_view rest = text.substr(begin);
    if (!rest.empty() && (rest[0] == '"' || rest[0] == '\''))
        return rest.substr(1, rest.find(rest[0], 1) - 1);
    return rest.substr(0, rest.find_first_of(" \t\r\n>"));
}

std::string WithoutSecrets(std::string_view text) {
    std::string shown;
    for (size_t equals; (equals = text.find('=')) != std::string_view::npos;) {
        const std::string_view value = ValueBehind(text, equals);
        const auto begin = static_cast<size_t>(value.data() - text.data());
        const bool secret = NamesSecret(NameBefore(text, equals)) ||
                            (value.find('=') != std::string_view::npos && NamesSecret(value));
        shown.append(text.substr(0, begin)).append(secret ? "***" : value);
        text.remove_prefix(begin + value.size());
    }
    return shown.append(text);
}

std::string WithoutControls(std::string_view text) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string shown;
    shown.reserve(text.size());
    for (size_t at = 0; at < text.size(); ++at) {
        const size_t begin = at;
        while (at < text.size() && IsPlain(text[at]))
            ++at;
        shown.append(text, begin, at - begin);
        if (at == text.size())
            break;
        const auto byte = static_cast<unsigned char>(text[at]);
        if (IsControl(text, at))
            shown += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        else
            shown += text[at];
    }
    return shown;
}

} // namespace

bool IsPrintable(std::string_view text) {
    return !g_masked && IsPlainText(text);
}

std::string Printable(std::string_view text) {
    return g_masked ? WithoutControls(WithoutSecrets(text)) : WithoutControls(text);
}

void MaskSecrets(bool masked) {
    g_masked = masked;
}
