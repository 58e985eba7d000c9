// SPDX-License-Identifier: GPL-2.0-only
// The record as an independent description: from a schema text, the element that names every
// attribute and the bytes that must then be found in the record.
//
// A schema is a list of fields in record order, "name/type" or "name/type/text/stored":
//   u8 u16 u32 f ip    numbers and addresses     sN tN  text of N bytes, with or without a last NUL
//   m32 x128           mask, reserve data        nN     a text that must be cleared
//   "-" as name        a field that no attribute fills
// "table( N ... )" holds N entries of one field list: index text of one character; "table{ ... }"
// of any length; "table[ ... ]" takes rows in document order. The element carries one row too many.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

constexpr int kUntouched = -1;

struct Layout {
    std::string attributes;
    std::string children;
    std::vector<int> bytes; // kUntouched where nothing may be written
    std::size_t align = 1;

    void Append(const Layout& part); // as C lays out a member after those before
    void Finish() { bytes.resize((bytes.size() + align - 1) / align * align, kUntouched); }
};

// `serial` numbers the fields, so that each gets a value of its own.
Layout BuildLayout(const std::string& schema, int* serial);
