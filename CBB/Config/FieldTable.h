// SPDX-License-Identifier: GPL-2.0-only
// Reads XML elements into plain structs, driven by a table a struct.
//
//   template <> struct Fields<LanPara> {
//       using Block = LanPara;
//       static constexpr FieldRow rows[] = {
//           FIELD(ucFD_DhcpEnableFlag),              // converted as its member's type asks for
//           FIELD_BY(uiFD_LocalIp, StoreAddress),    // by a conversion of its own
//       };
//   };
//
// Attribute names match regardless of case, element names exactly. Only fields whose attributes
// are present change; unknown attributes are passed over.
#pragma once

#include <cstddef>
#include <iterator>

#include "CBB/Config/FieldConvert.h"

class TiXmlElement;

// One attribute: where its value goes in the struct, and how. A conversion returns 0; a positive
// value to make that the result of the walk, which goes on; a negative one to end the walk with it.
struct FieldRow {
    const char* name;
    size_t offset;
    int (*convert)(const char* text, void* field);
};

// The table of a struct: specialised beside the importer that needs it.
template <typename Block>
struct Fields;

template <typename Member>
int ConvertByType(const char* text, void* field) {
    return Store(text, static_cast<Member*>(field));
}

template <typename Member, int (*Conversion)(const char*, Member*)>
int ConvertBy(const char* text, void* field) {
    return Conversion(text, static_cast<Member*>(field));
}

#define FIELD(member)                                                                              \
    FieldRow {                                                                                     \
        #member, offsetof(Block, member), ConvertByType<decltype(Block::member)>                   \
    }
#define FIELD_BY(member, conversion)                                                               \
    FieldRow {                                                                                     \
        #member, offsetof(Block, member), ConvertBy<decltype(Block::member), conversion>           \
    }

// How a row of a table element tells which entry it fills.
enum class RowIndex {
    OneCharacter,  // "anything_N": exactly one character after the first underscore
    Number,        // "anything_NN": at least one character there
    DocumentOrder, // the n-th row fills entry n, whatever its name
};

// For a look at a row before its attributes are read.
using RowHook = void (*)(const TiXmlElement& row);

struct RowArray {
    void* first;
    size_t count;
    size_t size; // bytes from one entry to the next
};

int ReadAttributes(const TiXmlElement* element, const FieldRow* fields, size_t fieldCount,
                   void* block);
int ReadTable(const TiXmlElement* section, const char* tableName, RowIndex rowIndex,
              const FieldRow* fields, size_t fieldCount, RowArray rows, RowHook beforeRow);

// Reads an element's attributes into `block`. Result: 0, what a conversion returned, or -1
// without an element.
template <typename Block>
int ReadAttributes(const TiXmlElement* element, Block* block) {
    using Table = Fields<Block>;
    return ReadAttributes(element, Table::rows, std::size(Table::rows), block);
}

// Reads the rows of the child element `tableName`; without that element there is nothing to do.
// A row beyond the last entry ends the table, one with a negative index is passed over.
// Result: 0, or -1 without a section and for a row name without a fitting index text.
template <typename Row, size_t N>
int ReadTable(const TiXmlElement* section, const char* tableName, RowIndex rowIndex, Row (&rows)[N],
              RowHook beforeRow = nullptr) {
    using Table = Fields<Row>;
    return ReadTable(section,
                     tableName,
                     rowIndex,
                     Table::rows,
                     std::size(Table::rows),
                     {rows, N, sizeof(Row)},
                     beforeRow);
}

// The section's attributes into `block`, then the rows of its table. A walk of the attributes that
// does not end with 0 is the result, and leaves the table unread.
template <typename Block, typename Row, size_t N>
int ReadAttributesAndTable(const TiXmlElement* section, Block* block, const char* tableName,
                           RowIndex rowIndex, Row (&rows)[N], RowHook beforeRow = nullptr) {
    const int result = ReadAttributes(section, block);
    return result != 0 ? result : ReadTable(section, tableName, rowIndex, rows, beforeRow);
}
