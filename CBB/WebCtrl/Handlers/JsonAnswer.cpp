// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace {

constexpr std::string_view kHeaders = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n";
// Stands before a chunk until its size is known. Most sizes have two digits.
constexpr std::string_view kSizeLine = "xx\r\n";
constexpr size_t kSizeDigits = 2;

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

// The bytes that need no escape.
struct PlainBytes {
    constexpr PlainBytes() : is() {
        for (unsigned char byte = 0x20; byte < 0x7F; ++byte)
            is[byte] = byte != '"' && byte != '\\' && byte != '<';
    }
    bool is[256];
};
constexpr PlainBytes kPlain;

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

JsonAnswer::JsonAnswer(For whom) : m_hidesSecrets(whom == For::Reader) {
    Add(kHeaders);
    Add(m_hidesSecrets ? "Webctrl-Access: read\r\n\r\n" : "\r\n");
}

void JsonAnswer::Member(std::string_view name, int value) {
    BeginMember(name);
    AddNumber(value);
    EndChunk("\"");
}

void JsonAnswer::Member(std::string_view name, const char* text, size_t maxBytes) {
    BeginMember(name);
    AddEscaped({text, strnlen(text, maxBytes)});
    EndChunk("\"");
}

void JsonAnswer::Member(const WebField& field, const void* block) {
    if (field.kind == FieldKind::Text)
        Member(field.member, field.secret && m_hidesSecrets ? "" : TextAt(field, block),
               field.size);
    else
        Member(field.member, static_cast<int>(NumberAt(field, block)));
}

void JsonAnswer::Chunk(std::string_view before, int value, std::string_view after) {
    BeginChunk(before);
    AddNumber(value);
    EndChunk(after);
}

void JsonAnswer::Chunk(std::string_view before, const char* text, std::string_view after,
                       size_t maxBytes) {
    BeginChunk(before);
    AddEscaped({text, strnlen(text, maxBytes)});
    EndChunk(after);
}

void JsonAnswer::Chunk(std::string_view text) {
    BeginChunk(text);
    EndChunk("");
}

void JsonAnswer::Result(bool worked, std::string_view separator) {
    BeginChunk(separator);
    EndChunk(worked ? "\"result\": 1 }" : "\"result\": 0 }");
    End();
}

void JsonAnswer::End() {
    Add("0\r\n\r\n");
}

void JsonAnswer::Add(std::string_view text) {
    m_failed = m_failed || text.size() > kMaxAnswerBytes - m_size;
    if (m_failed)
        return;
    memcpy(m_bytes + m_size, text.data(), text.size());
    m_size += text.size();
}

void JsonAnswer::AddNumber(int value) {
    char digits[sizeof("-2147483648")];
    const char* end = std::to_chars(digits, digits + sizeof(digits), value).ptr;
    Add({digits, static_cast<size_t>(end - digits)});
}

void JsonAnswer::AddEscaped(std::string_view value) {
    const auto* text = reinterpret_cast<const unsigned char*>(value.data());
    const size_t size = value.size();
    size_t at = 0;
    while (at < size) {
        size_t run = at;
        while (run < size && kPlain.is[text[run]])
            ++run;
        Add(value.substr(at, run - at));
        at = run;
        if (at == size)
            return;
        const unsigned char byte = text[at];
        if (byte == '"' || byte == '\\') {
            Add("\\");
            Add(value.substr(at++, 1));
        } else if (byte < 0x80) {
            char escape[sizeof("\\u0000")];
            snprintf(escape, sizeof(escape), "\\u%04x", byte);
            Add(escape);
            ++at;
        } else if (const size_t length = Utf8Length(text + at, size - at)) {
            Add(value.substr(at, length));
            at += length;
        } else {
            Add("\\ufffd");
            ++at;
        }
    }
}

void JsonAnswer::BeginMember(std::string_view name) {
    BeginChunk(m_opening);
    Add(name);
    Add("\": \"");
}

void JsonAnswer::BeginChunk(std::string_view text) {
    Add(kSizeLine);
    m_chunkAt = m_size;
    m_opening = ", \"";
    Add(text);
}

void JsonAnswer::EndChunk(std::string_view text) {
    Add(text);
    char digits[sizeof(size_t) * 2];
    const size_t chunkBytes = m_size - m_chunkAt;
    const char* end = std::to_chars(digits, digits + sizeof(digits), chunkBytes, 16).ptr;
    const auto count = static_cast<size_t>(end - digits);
    if (count > kSizeDigits)
        Add({digits, count - kSizeDigits}); // room, for what moves back
    if (m_failed)
        return;
    char* const chunk = m_bytes + m_chunkAt;
    char* const size = chunk - kSizeLine.size();
    memmove(size + count + 2, chunk, chunkBytes);
    std::copy_n(digits, count, size);
    size[count] = '\r';
    size[count + 1] = '\n';
    m_size = m_chunkAt - kSizeLine.size() + count + 2 + chunkBytes;
    Add("\r\n");
}
