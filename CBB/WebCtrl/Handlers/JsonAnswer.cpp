// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <mongoose.h>

namespace {

constexpr char kHeaderBlock[] = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
// Room for most answers, so that a member costs no allocation.
constexpr size_t kUsualAnswerBytes = 2048;
constexpr size_t kUsualChunkBytes = 128;

// Length of the UTF-8 sequence of two to four bytes at the start of `text`, which has `size` bytes
// (RFC 3629, no overlong forms, no surrogates); 0 if there is none.
size_t Utf8Length(const unsigned char* text, size_t size) {
    const auto continues = [&](size_t at) { return at < size && (text[at] & 0xC0) == 0x80; };
    const unsigned char lead = text[0];
    if (lead >= 0xC2 && lead <= 0xDF)
        return continues(1) ? 2 : 0;
    if ((lead & 0xF0) == 0xE0) {
        if (!continues(1) || !continues(2) || (lead == 0xE0 && text[1] < 0xA0) ||
            (lead == 0xED && text[1] > 0x9F))
            return 0;
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        if (!continues(1) || !continues(2) || !continues(3) || (lead == 0xF0 && text[1] < 0x90) ||
            (lead == 0xF4 && text[1] > 0x8F))
            return 0;
        return 4;
    }
    return 0;
}

bool IsPlain(unsigned char byte) {
    return byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\' && byte != '<';
}

void AppendEscaped(std::string& out, const char* value, size_t size) {
    const auto* text = reinterpret_cast<const unsigned char*>(value);
    size_t at = 0;
    while (at < size) {
        size_t run = at;
        while (run < size && IsPlain(text[run]))
            ++run;
        out.append(value + at, run - at);
        at = run;
        if (at == size)
            return;
        const unsigned char byte = text[at];
        if (byte == '"' || byte == '\\') {
            out.push_back('\\');
            out.push_back(value[at++]);
        } else if (byte < 0x80) {
            char escape[sizeof("\\u0000")];
            snprintf(escape, sizeof(escape), "\\u%04x", byte);
            out.append(escape);
            ++at;
        } else if (const size_t length = Utf8Length(text + at, size - at)) {
            out.append(value + at, length);
            at += length;
        } else {
            out.append("\\ufffd");
            ++at;
        }
    }
}

} // namespace

uint32_t NumberAt(const WebField& field, const void* block) {
    const char* at = TextAt(field, block);
    uint8_t u8 = 0;
    uint16_t u16 = 0;
    uint32_t u32 = 0;
    switch (field.kind) {
    case FieldKind::U8:
        memcpy(&u8, at, sizeof(u8));
        return u8;
    case FieldKind::U16:
        memcpy(&u16, at, sizeof(u16));
        return u16;
    default:
        memcpy(&u32, at, sizeof(u32));
        return u32;
    }
}

JsonAnswer::JsonAnswer(mg_connection* connection) : m_connection(connection) {
    m_answer.reserve(kUsualAnswerBytes);
    m_chunk.reserve(kUsualChunkBytes);
    m_answer = kHeaderBlock;
}

void JsonAnswer::Member(const char* name, int value) {
    m_chunk.assign(m_opening).append(name).append("\": \"");
    m_chunk.append(std::to_string(value)).append("\"");
    EndChunk();
}

void JsonAnswer::Member(const char* name, const char* text, size_t maxBytes) {
    m_chunk.assign(m_opening).append(name).append("\": \"");
    AppendEscaped(m_chunk, text, strnlen(text, maxBytes));
    m_chunk.append("\"");
    EndChunk();
}

void JsonAnswer::Member(const WebField& field, const void* block) {
    if (field.kind == FieldKind::Text)
        Member(field.member, TextAt(field, block), field.size);
    else
        Member(field.member, static_cast<int>(NumberAt(field, block)));
}

void JsonAnswer::Chunk(const char* before, int value, const char* after) {
    m_chunk.assign(before).append(std::to_string(value)).append(after);
    EndChunk();
}

void JsonAnswer::Chunk(const char* before, const char* text, const char* after, size_t maxBytes) {
    m_chunk.assign(before);
    AppendEscaped(m_chunk, text, strnlen(text, maxBytes));
    m_chunk.append(after);
    EndChunk();
}

void JsonAnswer::Chunk(const char* text) {
    m_chunk.assign(text);
    EndChunk();
}

void JsonAnswer::Result(bool worked, const char* separator) {
    m_chunk.assign(separator).append("\"result\": ").append(worked ? "1 }" : "0 }");
    EndChunk();
    End();
}

void JsonAnswer::End() {
    m_answer.append("0\r\n\r\n");
    mg_send(m_connection, m_answer.data(), m_answer.size());
    m_connection->is_resp = 0; // the library may take the next request
}

void JsonAnswer::WriteResult(mg_connection* connection, bool worked) {
    JsonAnswer answer(connection);
    answer.Result(worked, "{");
}

void JsonAnswer::EndChunk() {
    char size[sizeof(size_t) * 2];
    char* end = std::to_chars(size, size + sizeof(size), m_chunk.size(), 16).ptr;
    m_answer.append(size, static_cast<size_t>(end - size))
        .append("\r\n")
        .append(m_chunk)
        .append("\r\n");
    m_opening = ", \"";
}
