// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "CBB/WebCtrl/Handlers/WebField.h"

// One JSON answer as the bytes of an HTTP response: status 200, chunked (RFC 9112, 7.1), one chunk
// a member.
//
// All values stand in quotes, numbers too. `"`, `\` and control characters are escaped (RFC 8259).
// So is `<`: the answer has no Content-Type, and no client may take it for HTML. Bytes that are no
// UTF-8 become U+FFFD. Only `result` is a bare number: 1 it worked, 0 it failed.
class JsonAnswer {
public:
    // A reader's answer says so in the header `Webctrl-Access: read`, and its secret fields are
    // empty.
    enum class For { All, Reader };
    explicit JsonAnswer(For whom = For::All);

    // The next member: `{ "NAME": "value"` first, `, "NAME": "value"` after it.
    void Member(std::string_view name, int value);
    // `text` ends at its NUL, or after `maxBytes`.
    void Member(std::string_view name, const char* text, size_t maxBytes = SIZE_MAX);
    // A member for each field of the record at `block`.
    template <size_t N>
    void Members(const WebField (&fields)[N], const void* block) {
        for (const WebField& field : fields)
            Member(field, block);
    }
    void Member(const WebField& field, const void* block);

    // A chunk with another form than a member: `before`, the escaped value, `after`.
    void Chunk(std::string_view before, int value, std::string_view after);
    void Chunk(std::string_view before, const char* text, std::string_view after,
               size_t maxBytes = SIZE_MAX);
    // A chunk without a value.
    void Chunk(std::string_view text);

    // The last member, `, "result": N }`, and the end of the body.
    void Result(bool worked, std::string_view separator = ", ");
    // The end of the body, an empty chunk.
    void End();

    // A whole write answer: `{"result": N }`.
    void WriteResult(bool worked) { Result(worked, "{"); }

    // The whole response; empty when it was too long.
    std::string_view Bytes() const { return {m_bytes, m_failed ? 0 : m_size}; }

private:
    void Add(std::string_view text);
    void AddNumber(int value);
    void AddEscaped(std::string_view value);
    void BeginMember(std::string_view name);
    void BeginChunk(std::string_view text);
    void EndChunk(std::string_view text);

    // All texts of an answer come from one reply of 1024 bytes, and an escape takes at most six
    // bytes. The rest of an answer is below 4 KiB.
    static constexpr size_t kMaxAnswerBytes = 12 * 1024;

    char m_bytes[kMaxAnswerBytes];
    size_t m_size = 0;
    size_t m_chunkAt = 0; // where the chunk begins, behind its size
    bool m_failed = false;
    bool m_hidesSecrets;
    std::string_view m_opening = "{ \"";
};
