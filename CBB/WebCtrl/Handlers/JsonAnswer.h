// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "CBB/WebCtrl/Handlers/WebField.h"

struct mg_connection;

/// Writes one JSON answer: status 200, chunked (RFC 9112, 7.1), one chunk a member. It is
/// written into the connection's send buffer; nothing else may be, until its end.
///
/// Values stand in quotes, numbers included, and are escaped (RFC 8259): `"`, `\`, control
/// characters, `<`, so that no client takes an answer without Content-Type for HTML, and U+FFFD in
/// place of bytes that are no UTF-8. Only `result` is a bare number: 1 it worked, 0 it failed.
class JsonAnswer {
public:
    explicit JsonAnswer(mg_connection* connection);

    /// The next member: `{ "NAME": "value"` first, `, "NAME": "value"` after it.
    void Member(std::string_view name, int value);
    /// A text of at most `maxBytes`, or up to its NUL.
    void Member(std::string_view name, const char* text, size_t maxBytes = SIZE_MAX);
    /// A member for each field of the record at `block`.
    template <size_t N>
    void Members(const WebField (&fields)[N], const void* block) {
        for (const WebField& field : fields)
            Member(field, block);
    }
    void Member(const WebField& field, const void* block);

    /// A chunk of its own form: `before`, the escaped value, `after`.
    void Chunk(std::string_view before, int value, std::string_view after);
    void Chunk(std::string_view before, const char* text, std::string_view after,
               size_t maxBytes = SIZE_MAX);
    /// A chunk without a value.
    void Chunk(std::string_view text);

    /// The last member, `, "result": N }`, and the end of the body.
    void Result(bool worked, std::string_view separator = ", ");
    /// The end of the body, an empty chunk.
    void End();

    /// A whole write answer: `{"result": N }`.
    static void WriteResult(mg_connection* connection, bool worked);

private:
    void Add(std::string_view text);
    void AddNumber(int value);
    void AddEscaped(std::string_view value);
    void BeginMember(std::string_view name);
    void BeginChunk(std::string_view text);
    void EndChunk(std::string_view text);

    mg_connection* m_connection;
    size_t m_chunkAt = 0; // where in the send buffer the chunk begins, behind its size
    std::string_view m_opening = "{ \"";
};
