// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>

#include "CBB/WebCtrl/Handlers/WebField.h"

struct mg_http_message;

/// The form fields of a request's body (application/x-www-form-urlencoded); the query string is
/// not looked at. A field that is not there reads as the empty text.
class Form {
public:
    /// Values are cut to one byte less than `bufferBytes` (at most 512) before anything else.
    explicit Form(const mg_http_message* message, size_t bufferBytes = 64)
        : m_message(message), m_bufferBytes(bufferBytes) {}

    /// The field's value, valid until the next call. `bufferBytes` 0: as constructed.
    const char* Text(const char* name, size_t bufferBytes = 0);
    /// As Text, but a value too long for the buffer counts as absent.
    const char* WholeText(const char* name);
    /// The field's value as C's atoi reads it, 0 when absent.
    int Number(const char* name);

    /// Fills the record at `block`: numbers keep their field's low bits, texts are cut to their
    /// field's size less one, what is absent leaves the field as it is.
    template <size_t N>
    void Read(const WebField (&fields)[N], void* block) {
        for (const WebField& field : fields)
            Read(field, block);
    }
    void Read(const WebField& field, void* block);

private:
    const mg_http_message* m_message;
    size_t m_bufferBytes;
    int m_length = 0;
    char m_buffer[512];
};
