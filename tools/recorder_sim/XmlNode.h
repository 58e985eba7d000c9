// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// One XML element as plain data: copied, compared and changed like any value. Text between
// elements is not kept, since neither messages nor the state carry any.
struct XmlNode {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes; // in document order
    std::vector<XmlNode> children;

    // The attribute's value, its name compared without regard to case; nullptr when there is none.
    std::string* FindAttribute(std::string_view attribute);
    // The first child of exactly this name; nullptr when there is none.
    XmlNode* FindChild(std::string_view child);
};

// Reads the first element of a document. Bytes from 0x80 up pass through as they are (UTF-8).
// `error` says what is wrong with the document ("line 3: ...") and stays empty for a sound one. A
// malformed document gives its part before the fault, so that a request with an unclosed section
// can be read. Returns nothing when there is no element, or when elements nest deeper than any
// message does.
std::optional<XmlNode> ParseXml(std::string text, std::string& error);

// `&`, `<`, `>`, `"` and control bytes as entities, so that any text without a NUL survives inside
// an attribute; a NUL, which XML cannot carry, is left out.
std::string EscapeXml(std::string_view text);

// The element on one line, as datagrams carry it.
std::string ToLine(const XmlNode& node);

// The element as a document for people: indented, one attribute a line.
std::string ToDocument(const XmlNode& node);
