// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <string_view>

#include "CBB/WebCtrl/Handlers/WebField.h"

// The form fields of a request's body (application/x-www-form-urlencoded). The query string is
// ignored. Names match without regard to case; if a name comes twice, its first field counts. A
// missing field reads as the empty text, and a field with a broken escape ends before it.
class Form {
public:
    // Every value is first cut to `bufferBytes` - 1 bytes; `bufferBytes` is at most 512.
    explicit Form(std::string_view body, size_t bufferBytes = 64)
        : m_body(body), m_bufferBytes(bufferBytes) {}

    // The field's value, valid until the next call. `bufferBytes` 0 stands for the constructor's.
    const char* Text(const char* name, size_t bufferBytes = 0);
    // As Text, but a value too long for the buffer counts as absent.
    const char* WholeText(const char* name);
    // The field's value as C's atoi reads it, 0 when absent.
    int Number(const char* name);

    // Fills the record at `block`. A number keeps the low bits that its field has, a text is cut to
    // its field's size less one, and a missing form field leaves its record field as it is. No form
    // has numbers of 32 bits.
    template <size_t N>
    void Read(const WebField (&fields)[N], void* block) {
        for (const WebField& field : fields)
            Read(field, block);
    }
    void Read(const WebField& field, void* block);

private:
    std::string_view m_body;
    size_t m_bufferBytes;
    bool m_isWhole = false;
    char m_buffer[512];
};
