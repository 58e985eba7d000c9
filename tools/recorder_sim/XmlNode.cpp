// SPDX-License-Identifier: GPL-2.0-only
#include "XmlNode.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <tinyxml.h>

namespace {

// The parser recurses. A message nests 5 deep, and each raw `<` inside a value may count as well.
constexpr int kMaxNesting = 64;

bool NestsTooDeep(const std::string& text) {
    int depth = 0;
    for (size_t i = 0; i + 1 < text.size(); ++i) {
        const char next = text[i + 1];
        if (text[i] == '<' && next != '/' && next != '!' && next != '?') {
            if (++depth > kMaxNesting)
                return true;
        } else if ((text[i] == '<' && next == '/') || (text[i] == '/' && next == '>')) {
            --depth;
        }
    }
    return false;
}

void AppendUtf8(unsigned long code, std::string& out) {
    // The leading byte's mark and the number of bytes behind it.
    const int tail = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    static const unsigned char mark[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(mark[tail] | code >> (6 * tail));
    for (int i = tail - 1; i >= 0; --i)
        out += static_cast<char>(0x80 | (code >> (6 * i) & 0x3F));
}

bool StartsNamedReference(const std::string& text, size_t at) {
    for (const char* name : {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"})
        if (text.compare(at, strlen(name), name) == 0)
            return true;
    return false;
}

// The parser, reading byte by byte, keeps one byte of a character reference and drops a bare `&`.
// So references become UTF-8 here, and a bare `&` becomes a reference.
std::string MendReferences(const std::string& text) {
    std::string out;
    size_t done = 0;
    for (size_t at; (at = text.find('&', done)) != std::string::npos;) {
        out.append(text, done, at - done);
        done = at + 1;
        const bool hex = text.compare(at, 3, "&#x") == 0;
        const bool numeric = text.compare(at, 2, "&#") == 0 && isxdigit(text[at + (hex ? 3 : 2)]);
        char* end = nullptr;
        const unsigned long code =
            numeric ? strtoul(&text[at + (hex ? 3 : 2)], &end, hex ? 16 : 10) : 0;
        if (numeric && *end == ';' && code <= 0x10FFFF) {
            const auto next = static_cast<size_t>(end - text.data()) + 1;
            if (code < 0x80)
                out.append(text, at, next - at);
            else
                AppendUtf8(code, out);
            done = next;
        } else {
            out += StartsNamedReference(text, at) ? "&" : "&amp;";
        }
    }
    return out.append(text, done, std::string::npos);
}

XmlNode Copy(const TiXmlElement& element) {
    XmlNode node;
    node.name = element.ValueStr();
    for (auto* a = element.FirstAttribute(); a != nullptr; a = a->Next())
        node.attributes.emplace_back(a->Name(), a->ValueStr());
    for (auto* e = element.FirstChildElement(); e != nullptr; e = e->NextSiblingElement())
        node.children.push_back(Copy(*e));
    return node;
}

void Write(const XmlNode& node, std::string& out) {
    out += '<' + node.name;
    for (const auto& [name, value] : node.attributes)
        out.append(" ").append(name).append("=\"").append(EscapeXml(value)) += '"';
    if (node.children.empty()) {
        out += "/>";
        return;
    }
    out += '>';
    for (const XmlNode& child : node.children)
        Write(child, out);
    out += "</" + node.name + '>';
}

void WriteIndented(const XmlNode& node, const std::string& indent, std::string& out) {
    const std::string lead = '\n' + indent + "    ";
    out += indent + '<' + node.name;
    for (const auto& [name, value] : node.attributes)
        out.append(lead).append(name).append("=\"").append(EscapeXml(value)) += '"';
    if (node.children.empty()) {
        out += "/>\n";
        return;
    }
    out += ">\n";
    for (const XmlNode& child : node.children)
        WriteIndented(child, indent + "  ", out);
    out += indent + "</" + node.name + ">\n";
}

} // namespace

std::string* XmlNode::FindAttribute(std::string_view attribute) {
    for (auto& [key, value] : attributes) {
        if (key.size() == attribute.size() &&
            strncasecmp(key.data(), attribute.data(), key.size()) == 0) {
            return &value;
        }
    }
    return nullptr;
}

XmlNode* XmlNode::FindChild(std::string_view child) {
    for (XmlNode& node : children)
        if (node.name == child)
            return &node;
    return nullptr;
}

std::optional<XmlNode> ParseXml(std::string text, std::string& error) {
    error.clear();
    // Editors on other systems put a byte order mark first.
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0)
        text.erase(0, 3);
    if (NestsTooDeep(text)) {
        error = "elements nest too deep";
        return std::nullopt;
    }
    TiXmlDocument document;
    // Byte by byte: in UTF-8 mode the parser steps past the end of a text that is cut inside a
    // character. The bytes arrive the same either way.
    document.Parse(MendReferences(text).c_str(), nullptr, TIXML_ENCODING_LEGACY);
    if (document.Error())
        error = "line " + std::to_string(document.ErrorRow()) + ": " + document.ErrorDesc();
    const TiXmlElement* root = document.RootElement();
    if (root == nullptr) {
        if (error.empty())
            error = "there is no element";
        return std::nullopt;
    }
    return Copy(*root);
}

std::string EscapeXml(std::string_view text) {
    static const char hex[] = "0123456789ABCDEF";
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else if (byte >= 0x20 && byte != 0x7F)
            out += c;
        else if (byte != 0)
            out += {'&', '#', 'x', hex[byte >> 4], hex[byte & 15], ';'};
    }
    return out;
}

std::string ToLine(const XmlNode& node) {
    std::string out;
    Write(node, out);
    return out;
}

std::string ToDocument(const XmlNode& node) {
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    WriteIndented(node, "", out);
    return out;
}
