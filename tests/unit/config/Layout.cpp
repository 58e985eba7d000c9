// SPDX-License-Identifier: GPL-2.0-only
#include "tests/unit/config/Layout.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace {

template <typename T>
std::string Bytes(T value) {
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

// Too long for every field by some characters.
std::string LongText(int serial, std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size + 3; ++i)
        text += static_cast<char>('a' + (static_cast<std::size_t>(serial) + i) % 26);
    return text;
}

struct Value {
    std::string text;
    std::string bytes;
    std::size_t align = 1;
};

Value ValueOf(const std::string& type, int serial, const std::string& text, std::string stored) {
    const auto number =
        stored.empty() ? static_cast<std::int32_t>(static_cast<std::uint32_t>(serial) * 0x01030507U)
                       : std::atoi(stored.c_str());
    const std::string given = text.empty() ? std::to_string(number) : text;
    const std::size_t size = std::strtoul(type.c_str() + 1, nullptr, 10);
    switch (type[0]) {
    case 'u':
        if (size == 8)
            return {given, Bytes(static_cast<std::uint8_t>(number))};
        if (size == 16)
            return {given, Bytes(static_cast<std::uint16_t>(number)), 2};
        return {given, Bytes(static_cast<std::uint32_t>(number)), 4};
    case 'f':
        if (!text.empty())
            return {text, Bytes(static_cast<float>(number)), 4};
        return {std::to_string(serial) + ".25", Bytes(static_cast<float>(serial) + 0.25F), 4};
    case 'n':
        return {LongText(serial, size), std::string(size, '\0')};
    case 'i':
        return {"10.0.9." + std::to_string(serial % 256),
                std::string("\x0a\0\x09", 3) + static_cast<char>(serial), 4};
    case 'm': {
        Value mask{"", "", 4};
        for (std::size_t i = 0; i < size; ++i) {
            mask.text += std::to_string(serial * 1000003 + static_cast<int>(i)) + ",";
            mask.bytes +=
                Bytes(static_cast<std::uint32_t>(serial * 1000003) + static_cast<std::uint32_t>(i));
        }
        return mask;
    }
    case 'x': {
        Value data;
        for (std::size_t i = 0; i < size; ++i) {
            data.text += "0123456789abcdef"[i / 16 % 16];
            data.text += "0123456789ABCDEF"[i % 16];
            data.bytes += static_cast<char>(i);
        }
        return data;
    }
    default: {
        const std::string value = text.empty() ? LongText(serial, size) : text;
        if (stored.empty())
            stored = value.substr(0, type[0] == 's' ? size - 1 : size);
        stored.resize(size, '\0');
        return {value, stored};
    }
    }
}

Layout FieldLayout(const std::string& token, int* serial) {
    std::istringstream parts(token);
    std::string name, type, text, stored;
    std::getline(std::getline(std::getline(std::getline(parts, name, '/'), type, '/'), text, '/'),
                 stored);
    const Value value = ValueOf(type, ++*serial, text, stored);
    Layout field;
    field.align = value.align;
    if (name == "-") {
        field.bytes.assign(value.bytes.size(), kUntouched);
        return field;
    }
    field.attributes = " " + name + "=\"" + value.text + "\"";
    for (const char byte : value.bytes)
        field.bytes.push_back(static_cast<std::uint8_t>(byte));
    return field;
}

} // namespace

void Layout::Append(const Layout& part) {
    align = std::max(align, part.align);
    bytes.resize((bytes.size() + part.align - 1) / part.align * part.align, kUntouched);
    bytes.insert(bytes.end(), part.bytes.begin(), part.bytes.end());
    attributes += part.attributes;
    children += part.children;
}

Layout BuildLayout(const std::string& schema, int* serial) {
    Layout layout;
    std::istringstream tokens(schema);
    for (std::string token; tokens >> token;) {
        const char open = token.back();
        if (std::strchr("([{", open) == nullptr) {
            layout.Append(FieldLayout(token, serial));
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
            row.attributes.clear();
            if (i < count)
                layout.Append(row);
        }
        layout.children += "</" + table + ">";
    }
    layout.Finish();
    return layout;
}
