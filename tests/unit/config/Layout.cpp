// SPDX-License-Identifier: GPL-2.0-only
#include "tests/unit/config/Sections.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>

namespace {

struct Value {
    std::string text;
    std::string bytes;
    std::size_t align = 1;
};

Value ValueOf(const std::string& type, unsigned serial, std::string text, std::string stored) {
    const std::size_t size = std::strtoul(type.c_str() + 1, nullptr, 10);
    const auto raw = [](const auto& number, std::size_t width) {
        return std::string(reinterpret_cast<const char*>(&number), width); // little-endian
    };
    switch (type[0]) {
    case 'u':
        if (text.empty())
            text = stored = std::to_string(static_cast<std::int32_t>(serial * 0x01030507));
        return {text, raw(std::atoi(stored.c_str()), size), size};
    case 'f':
        if (text.empty())
            text = stored = std::to_string(serial) + ".25";
        return {text, raw(std::strtof(stored.c_str(), nullptr), 4), 4};
    case 'i':
        return {"10.0.9." + std::to_string(serial % 256), {10, 0, 9, static_cast<char>(serial)}, 4};
    case 'm':
        for (std::size_t i = 0; i <= size; ++i) {
            const std::size_t entry = std::size_t{serial} * 1000003 + i;
            text += std::to_string(entry) + ",";
            stored += raw(entry, 4);
        }
        return {text, stored.substr(0, size * 4), 4};
    case 'x':
        for (std::size_t i = 0; i < size; ++i) {
            const char* digits = i % 2 ? "0123456789abcdef" : "0123456789ABCDEF";
            text += {digits[i / 16], digits[i % 16]};
            stored += raw(i, 1);
        }
        return {text + "f", stored};
    default:
        if (text.empty()) {
            for (std::size_t i = 0; i < size + 3; ++i)
                text += static_cast<char>('a' + (serial + i) % 26);
            stored = text.substr(0, type[0] == 's' ? size - 1 : type[0] == 't' ? size : 0);
        }
        stored.resize(size, '\0');
        return {text, stored};
    }
}

Layout FieldLayout(const std::string& token, unsigned serial) {
    static const std::map<std::string, std::string> types = {
        {"uc", "u1"}, {"us", "u2"}, {"ui", "u4"}};
    std::istringstream parts(token);
    std::string name, type, text, stored;
    for (std::string* part : {&name, &type, &text, &stored})
        std::getline(parts, *part, '/');
    if (type.empty())
        type = name[0] == 'f' ? "f" : types.at(name.substr(0, 2));
    const Value value = ValueOf(type, serial, text, stored);
    if (name == "-")
        return {"", "", std::vector<int>(value.bytes.size(), kUntouched), value.align, {}};
    Layout field{" " + name + "=\"" + value.text + "\"", "", {}, value.align, {}};
    for (const char byte : value.bytes)
        field.bytes.push_back(static_cast<std::uint8_t>(byte));
    return field;
}

} // namespace

void Layout::Append(const Layout& part) {
    align = std::max(align, part.align);
    Align(part.align);
    bytes.insert(bytes.end(), part.bytes.begin(), part.bytes.end());
    attributes += part.attributes;
    children += part.children;
}

Layout BuildLayout(const std::string& schema, unsigned* serial) {
    Layout layout;
    std::istringstream tokens(schema);
    for (std::string token; tokens >> token;) {
        const char open = token.back();
        if (std::strchr("([{", open) == nullptr) {
            layout.Append(FieldLayout(token, ++*serial));
            continue;
        }
        const std::string table = token.substr(0, token.size() - 1);
        int count = 0;
        std::string fields;
        tokens >> count;
        std::getline(tokens, fields, open == '(' ? ')' : open == '[' ? ']' : '}');
        layout.children += "<" + table + ">";
        for (int i = 0; i <= count; ++i) {
            Layout row = BuildLayout(fields, serial);
            const std::string name = open == '[' ? "row" : "row_" + std::to_string(i);
            layout.children += "<" + name + row.attributes + "/>";
            if (i == count)
                layout.tables.push_back({table, open, count, row.attributes});
            row.attributes.clear();
            if (i < count)
                layout.Append(row);
        }
        layout.children += "</" + table + ">";
    }
    layout.Align(layout.align);
    return layout;
}
