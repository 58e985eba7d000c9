// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Config/FieldTable.h"

#include <cstdint>
#include <cstring>
#include <strings.h>
#include <tinyxml.h>

#include "CBB/Util/TextFun.h"

namespace {

// Senders write attributes in the table's order: the search begins behind the last field found,
// and mostly ends there. A table has each name once, so the result is the same from anywhere.
const FieldRow* FindField(const char* name, const FieldRow* fields, size_t count, size_t* next) {
    for (size_t tried = 0; tried < count; ++tried) {
        const size_t at = *next;
        *next = at + 1 < count ? at + 1 : 0;
        // Most senders use our spelling: compare exactly first, it is cheaper.
        if (strcmp(name, fields[at].name) == 0 || strcasecmp(name, fields[at].name) == 0)
            return &fields[at];
    }
    return nullptr;
}

// False when the row's name carries no index text of the wanted length.
bool IndexOfRow(const TiXmlElement& row, RowIndex kind, int* index) {
    const char* underscore = strchr(row.Value(), '_');
    if (!underscore)
        return false;
    const char* text = underscore + 1;
    const size_t length = strlen(text);
    if (kind == RowIndex::OneCharacter ? length != 1 : length == 0)
        return false;
    *index = ToInt(text);
    return true;
}

} // namespace

int ReadAttributes(const TiXmlElement* element, const FieldRow* fields, size_t fieldCount,
                   void* block) {
    if (!element)
        return -1;
    int result = 0;
    size_t next = 0;
    for (const TiXmlAttribute* attribute = element->FirstAttribute(); attribute;
         attribute = attribute->Next()) {
        const FieldRow* field = FindField(attribute->Name(), fields, fieldCount, &next);
        if (!field)
            continue;
        const int status =
            field->convert(attribute->Value(), static_cast<uint8_t*>(block) + field->offset);
        if (status < 0)
            return status;
        if (status > 0)
            result = status;
    }
    return result;
}

int ReadTable(const TiXmlElement* section, const char* tableName, RowIndex rowIndex,
              const FieldRow* fields, size_t fieldCount, RowArray rows, RowHook beforeRow) {
    if (!section)
        return -1;
    const TiXmlElement* table = section->FirstChildElement(tableName);
    if (!table)
        return 0;
    int position = 0;
    for (const TiXmlElement* row = table->FirstChildElement(); row;
         row = row->NextSiblingElement(), ++position) {
        int index = position;
        if (rowIndex != RowIndex::DocumentOrder && !IndexOfRow(*row, rowIndex, &index))
            return -1;
        if (index < 0)
            continue;
        const auto entry = static_cast<size_t>(index);
        if (entry >= rows.count)
            return 0;
        if (beforeRow)
            beforeRow(*row);
        ReadAttributes(
            row, fields, fieldCount, static_cast<uint8_t*>(rows.first) + entry * rows.size);
    }
    return 0;
}
