// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include "CBB/Config/Config_Task.h"

#include <cstddef>
#include <functional>
#include <string>
#include <tinyxml.h>
#include <vector>

using T = CConfig_Task;
using Import = std::function<int(T&, const TiXmlElement*, DeviceParaRecord*)>;

// One block of the record, described a second time, apart from the code.
//
// A schema lists fields in record order, "name/type" or "name/type/text/stored". Types:
//   u1 u2 u4 f ip   numbers and addresses (u1, u2, u4, f where the name begins with uc, us, ui, f)
//   sN tN nN        texts of N bytes: with a last NUL, without, cleared by the import
//   m32 x128        mask, reserve data
// "-" as name is a field that no attribute fills. "table( N fields )" holds N entries: the index
// text has one character; "table{ N fields }": any length; "table[ N fields ]": rows in document
// order.
struct Section {
    Import import; // none for what no importer fills
    std::string schema;
};

// Every block of the record, in its order.
const std::vector<Section>& Sections();

constexpr int kUntouched = -1;

struct Table {
    std::string name;
    char mark; // of the schema: ( { [
    int count;
    std::string attributes; // of the row too many
};

// From a schema: the element that names every attribute and the bytes that the record must then
// hold. Texts are too long for their fields, numbers too wide, and a table has one row too many.
struct Layout {
    std::string attributes;
    std::string children;
    std::vector<int> bytes; // kUntouched where nothing may be written
    std::size_t align = 1;
    std::vector<Table> tables;

    void Align(std::size_t to) { bytes.resize((bytes.size() + to - 1) / to * to, kUntouched); }
    void Append(const Layout& part);
};

// `serial` numbers the fields, so that each has a value of its own.
Layout BuildLayout(const std::string& schema, unsigned* serial);

struct Element {
    explicit Element(const std::string& xml) { document.Parse(xml.c_str()); }
    const TiXmlElement* Get() const { return document.RootElement(); }
    TiXmlDocument document;
};
