// SPDX-License-Identifier: GPL-2.0-only
#include "tests/fuzz/Json.h"

#include <cstdint>
#include <cstring>

namespace {

// Each reader returns what follows the thing that it reads, null where it does not stand there.

const char* SkipSpace(const char* at) {
    return at + strspn(at, " \t\r\n");
}

const char* ReadText(const char* at) {
    if (*at++ != '"')
        return nullptr;
    while (*at != '"') {
        if (static_cast<uint8_t>(*at) < 0x20)
            return nullptr;
        if (*at++ != '\\')
            continue;
        if (*at == 'u' ? strspn(at + 1, "0123456789abcdefABCDEF") < 4
                       : *at == '\0' || strchr("\"\\/bfnrt", *at) == nullptr)
            return nullptr;
        at += *at == 'u' ? 5 : 1;
    }
    return at + 1;
}

const char* ReadValue(const char* at) {
    at = SkipSpace(at);
    if (*at == '"')
        return ReadText(at);
    if (*at != '{' && *at != '[') {
        at += *at == '-';
        const size_t digits = strspn(at, "0123456789");
        return digits == 0 || (digits > 1 && *at == '0') ? nullptr : at + digits;
    }
    const bool isObject = *at == '{';
    const char end = isObject ? '}' : ']';
    if (*SkipSpace(at + 1) == end)
        return SkipSpace(at + 1) + 1;
    do {
        at = SkipSpace(at + 1);
        if (isObject && ((at = ReadText(at)) == nullptr || *(at = SkipSpace(at)) != ':'))
            return nullptr;
        if ((at = ReadValue(at + isObject)) == nullptr)
            return nullptr;
        at = SkipSpace(at);
    } while (*at == ',');
    return *at == end ? at + 1 : nullptr;
}

bool IsUtf8(const char* at) {
    while (const auto lead = static_cast<uint8_t>(*at++)) {
        const int more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        uint32_t code = more == 0 ? lead : lead & (0x3F >> more);
        for (int i = 0; i < more; ++i, ++at) {
            if ((*at & 0xC0) != 0x80)
                return false;
            code = code << 6 | (*at & 0x3F);
        }
        constexpr uint32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
        const bool isLead = lead < 0x80 || (lead >= 0xC0 && lead < 0xF8);
        if (!isLead || code < kLeast[more] || code > 0x10FFFF || code >> 11 == 0x1B)
            return false;
    }
    return true;
}

} // namespace

bool IsJson(const std::string& text) {
    const char* end = ReadValue(text.c_str());
    return end != nullptr && SkipSpace(end) == text.c_str() + text.size() && IsUtf8(text.c_str());
}
