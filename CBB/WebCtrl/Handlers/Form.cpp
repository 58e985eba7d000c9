// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/Form.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

#include "CBB/Util/TextFun.h"

namespace {

// The value of a byte as a hexadecimal digit, -1 when it is none.
int HexDigit(char byte) {
    if (byte >= '0' && byte <= '9')
        return byte - '0';
    const int letter = (byte | 0x20) - 'a';
    return letter >= 0 && letter < 6 ? letter + 10 : -1;
}

// The value of the first field of that name, as it was sent; null when there is none.
std::string_view FindField(std::string_view body, std::string_view name) {
    while (!body.empty()) {
        const std::string_view field = body.substr(0, body.find('&'));
        body.remove_prefix(std::min(field.size() + 1, body.size()));
        const size_t nameBytes = std::min(field.find('='), field.size());
        if (nameBytes == name.size() && strncasecmp(field.data(), name.data(), nameBytes) == 0)
            return field.substr(std::min(nameBytes + 1, field.size()));
    }
    return {};
}

// Decodes into `text`, which is zeroed, as much as fits beside its NUL. Returns whether all did.
bool Decode(std::string_view value, char* text, size_t textBytes) {
    size_t at = 0;
    for (; at < value.size() && textBytes > 1; ++at, --textBytes) {
        char byte = value[at] == '+' ? ' ' : value[at];
        if (byte == '%') {
            const int high = at + 2 < value.size() ? HexDigit(value[at + 1]) : -1;
            const int low = at + 2 < value.size() ? HexDigit(value[at + 2]) : -1;
            if (high < 0 || low < 0)
                return false;
            byte = static_cast<char>(high << 4 | low);
            at += 2;
        }
        *text++ = byte;
    }
    return at == value.size();
}

} // namespace

const char* Form::Text(const char* name, size_t bufferBytes) {
    memset(m_buffer, 0, sizeof(m_buffer));
    m_isWhole =
        Decode(FindField(m_body, name), m_buffer, bufferBytes != 0 ? bufferBytes : m_bufferBytes);
    return m_buffer;
}

const char* Form::WholeText(const char* name) {
    Text(name);
    return m_isWhole ? m_buffer : "";
}

int Form::Number(const char* name) {
    return ToInt(Text(name));
}

void Form::Read(const WebField& field, void* block) {
    const char* text = Text(field.member);
    if (text[0] == '\0')
        return;
    char* at = static_cast<char*>(block) + field.offset;
    const int number = ToInt(text);
    const auto u8 = static_cast<uint8_t>(number);
    const auto u16 = static_cast<uint16_t>(number);
    switch (field.kind) {
    case FieldKind::U8:
        memcpy(at, &u8, sizeof(u8));
        break;
    case FieldKind::U16:
        memcpy(at, &u16, sizeof(u16));
        break;
    case FieldKind::U32:
        break; // only answers have such
    case FieldKind::Text:
        strncpy(at, text, field.size - 1);
        break;
    }
}
