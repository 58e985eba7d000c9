// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/Form.h"

#include <cstring>
#include <mongoose.h>

#include "CBB/Config/FieldConvert.h"

const char* Form::Text(const char* name, size_t bufferBytes) {
    // The library leaves a value that it could not decode without a NUL behind it.
    memset(m_buffer, 0, sizeof(m_buffer));
    m_length = mg_http_get_var(&m_message->body, name, m_buffer,
                               bufferBytes != 0 ? bufferBytes : m_bufferBytes);
    return m_buffer;
}

const char* Form::WholeText(const char* name) {
    Text(name);
    return m_length >= 1 ? m_buffer : "";
}

int Form::Number(const char* name) {
    return ToInt(Text(name));
}

void Form::Read(const WebField& field, void* block) {
    const char* text = Text(field.member);
    if (text[0] == '\0')
        return;
    char* at = static_cast<char*>(block) + field.offset;
    const auto number = static_cast<uint32_t>(ToInt(text));
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
        memcpy(at, &number, sizeof(number));
        break;
    case FieldKind::Text:
        strncpy(at, text, field.size - 1);
        break;
    }
}
