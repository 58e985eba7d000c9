// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <cstdint>

enum class FieldKind : uint8_t { U8, U16, U32, Text };

// One field of a parameter group: its place in the record, its name on the web (JSON member and
// form field), and its name on the link (XML attribute of a write).
//
//     using Block = NetWorkModePara;
//     constexpr WebField kFields[] = {
//         WEB_FIELD_AS(ucFD_NetWType, ucFD_NetType), // the web's name differs
//         WEB_FIELD(usFD_GPSInterval),
//         WEB_SECRET(strFD_Passwd),
//     };
struct WebField {
    const char* member;
    const char* attribute;
    size_t offset;
    size_t size; // bytes of the record's field; a text holds one less
    FieldKind kind;
    bool secret; // a password or a key: not for who may only read
};

template <typename T>
struct FieldKindOf;
template <>
struct FieldKindOf<uint8_t> {
    static constexpr FieldKind kind = FieldKind::U8;
};
template <>
struct FieldKindOf<uint16_t> {
    static constexpr FieldKind kind = FieldKind::U16;
};
template <>
struct FieldKindOf<uint32_t> {
    static constexpr FieldKind kind = FieldKind::U32;
};
template <size_t N>
struct FieldKindOf<char[N]> {
    static constexpr FieldKind kind = FieldKind::Text;
};

#define WEB_FIELD_OF(webName, field, secret)                                                       \
    WebField {                                                                                     \
        #webName, #field, offsetof(Block, field), sizeof(Block::field),                            \
            FieldKindOf<decltype(Block::field)>::kind, secret                                      \
    }
#define WEB_FIELD_AS(webName, field) WEB_FIELD_OF(webName, field, false)
#define WEB_SECRET(field) WEB_FIELD_OF(field, field, true)
#define WEB_FIELD(field) WEB_FIELD_AS(field, field)

// The value of a number field of the record at `block`.
uint32_t NumberAt(const WebField& field, const void* block);
// The text field of the record at `block`.
inline const char* TextAt(const WebField& field, const void* block) {
    return static_cast<const char*>(block) + field.offset;
}
