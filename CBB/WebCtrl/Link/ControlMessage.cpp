// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Link/ControlMessage.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <strings.h>
#include <tinyxml.h>

#include "CBB/WebCtrl/PrintLine.h"
#include "CBB/WebCtrl/WebCtrl.h"

namespace {

constexpr int kMaxXmlDepth = 16;
// A second guard, should the depth be counted wrong: 128 elements take some 40 KiB of stack.
constexpr int kMaxXmlElements = 128;

struct Command {
    const char* action;
    ParaCmdType type;
};

constexpr Command kCommands[] = {
    {"BROAD_SEARCH", BROAD_SEARCH},   {"DEVICE_QUERY", DEVICE_QUERY},   {"DEVICE_SET", DEVICE_SET},
    {"DEVICE_REBOOT", DEVICE_REBOOT}, {"DEVICE_FORMAT", DEVICE_FORMAT},
};

// The root of a parsed text; null when there is none or the text is not safe to parse.
const TiXmlElement* ParseRoot(TiXmlDocument& doc, const char* text) {
    if (!IsShallowXml(text))
        return nullptr;
    doc.SetTabSize(0); // positions in the text are not needed
    doc.Parse(text);
    return doc.FirstChildElement("VariCfgSec");
}

// The root's first attribute if it is the Action; otherwise prints a line and returns null.
const TiXmlAttribute* ActionOf(const TiXmlElement* root) {
    const TiXmlAttribute* first = root->FirstAttribute();
    if (first == nullptr) {
        PrintLine("CWebCtrl::GetParaCmdType, get first pAttribute failed.\n");
        return nullptr;
    }
    if (strcmp(first->Name(), "Action") != 0) {
        PrintLine("CWebCtrl::GetParaCmdType, first attribute name is not Action.\n");
        return nullptr;
    }
    return first;
}

// Whether the parser takes the `<` at `at` for the beginning of an element.
bool OpensElement(const char* at) {
    const auto first = static_cast<unsigned char>(at[1]);
    return isalpha(first) || first == '_' || first >= 0x7F;
}

// The `>` that ends the tag, or the end of the text. A `>` inside quotes ends nothing.
const char* EndOfTag(const char* at) {
    for (char quote = '\0'; *at != '\0' && (quote != '\0' || *at != '>'); ++at)
        if (quote != '\0')
            quote = *at == quote ? '\0' : quote;
        else if (*at == '"' || *at == '\'')
            quote = *at;
    return at;
}

// The `>` that ends a declaration. Null when quotes leave a doubt about where that is: the parser
// knows three attributes and skips anything else, quotes or not.
const char* EndOfDeclaration(const char* at) {
    char quote = '\0';
    for (; *at != '\0' && *at != '>'; ++at) {
        if (*at != '"' && *at != '\'')
            continue;
        const bool opens = at[-1] == '=';
        if (opens != (quote == '\0') || (!opens && *at != quote))
            return nullptr;
        quote = opens ? *at : '\0';
    }
    return quote == '\0' ? at : nullptr;
}

// The last character of the markup that begins at `at`, as the parser reads it (or the text's end).
const char* EndOfMarkup(const char* at) {
    constexpr std::string_view kOpaque[][2] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}};
    for (const auto& [begin, end] : kOpaque) {
        if (strncmp(at, begin.data(), begin.size()) != 0)
            continue;
        const char* found = strstr(at + begin.size(), end.data());
        return found != nullptr ? found + end.size() - 1 : at + strlen(at);
    }
    constexpr std::string_view kDeclaration = "<?xml";
    if (strncasecmp(at, kDeclaration.data(), kDeclaration.size()) == 0)
        return EndOfDeclaration(at);
    return OpensElement(at) ? EndOfTag(at + 1) : at + strcspn(at, ">");
}

} // namespace

Reply::Reply(const char* text)
    : m_document(std::make_unique<TiXmlDocument>()), m_root(ParseRoot(*m_document, text)) {}

Reply::~Reply() = default;

const char* Reply::Action() const {
    const TiXmlAttribute* action = m_root != nullptr ? ActionOf(m_root) : nullptr;
    return action != nullptr ? action->Value() : nullptr;
}

const char* Reply::Result() const {
    const TiXmlAttribute* action = m_root != nullptr ? m_root->FirstAttribute() : nullptr;
    const TiXmlAttribute* second = action != nullptr ? action->Next() : nullptr;
    return second != nullptr && strcmp(second->Name(), "Result") == 0 ? second->Value() : nullptr;
}

const char* Reply::Attribute(const char* name) const {
    const TiXmlAttribute* attribute = m_root != nullptr ? ActionOf(m_root) : nullptr;
    while (attribute != nullptr && strcmp(attribute->Name(), name) != 0)
        attribute = attribute->Next();
    return attribute != nullptr ? attribute->Value() : nullptr;
}

int CWebCtrl::GetParaCmdType(const char* text, int* type) {
    PrintLine("----------------------CWebCtrl::GetParaCmdType, data:", Foreign{text}, ".\n");
    const Reply message(text);
    if (!message.HasRoot()) {
        PrintLine("CWebCtrl::GetParaCmdType, xmlDoc.FirstChildElement[VariCfgSec] failed.\n");
        return -1;
    }
    const char* action = message.Action();
    if (action == nullptr)
        return -1;
    if (message.Result() != nullptr) {
        PrintLine("CWebCtrl::GetParaCmdType, is resp msg, do't handle.\n");
        return -1;
    }
    *type = DEVICE_UNSUPPORTED;
    for (const Command& command : kCommands)
        if (strcmp(action, command.action) == 0)
            *type = command.type;
    PrintLine("CWebCtrl::GetParaCmdType, support cmd:", Foreign{action}, ".\n");
    return 0;
}

int CWebCtrl::GetParaAttrValue(const char* text, const char* name, char* value) {
    const Reply message(text);
    const char* found = message.Attribute(name);
    if (found == nullptr)
        return -1;
    snprintf(value, kAttrValueCapacity, "%s", found);
    return 0;
}

int CWebCtrl::GetParaSection(TiXmlDocument& doc, const char* text, TiXmlElement** section) {
    const TiXmlElement* root = ParseRoot(doc, text);
    if (root == nullptr || ActionOf(root) == nullptr)
        return -1;
    const TiXmlElement* child = root->FirstChildElement();
    if (child == nullptr)
        return -1;
    *section = const_cast<TiXmlElement*>(child);
    return 0;
}

bool IsShallowXml(const char* text) {
    // A fast way out for nearly every reply.
    int tags = 0;
    for (const char* at = strchr(text, '<'); at != nullptr; at = strchr(at + 1, '<'))
        tags += OpensElement(at);
    if (tags <= kMaxXmlDepth)
        return true;

    int elements = 0;
    int depth = 0;
    for (const char* at = strchr(text, '<'); at != nullptr; at = strchr(at, '<')) {
        const char* end = EndOfMarkup(at);
        if (end == nullptr)
            return false;
        if (OpensElement(at) && (++depth > kMaxXmlDepth || ++elements > kMaxXmlElements))
            return false;
        if (at[1] == '/' || (OpensElement(at) && end[-1] == '/'))
            depth = std::max(depth - 1, 0); // an end tag outside the root ends nothing
        at = end;
    }
    return true;
}

std::string QueryText(std::string_view section) {
    std::string text = "<VariCfgSec Action=\"DEVICE_QUERY\"><";
    return text.append(section).append("></VariCfgSec>");
}

SetMessage& SetMessage::Open(const char* element) {
    m_text.append("<").append(element);
    return *this;
}

SetMessage& SetMessage::Number(const char* attribute, unsigned value) {
    m_text.append(" ").append(attribute).append("=\"").append(std::to_string(value)).append("\"");
    return *this;
}

SetMessage& SetMessage::Text(const char* attribute, const char* value) {
    m_text.append(" ").append(attribute).append("=\"");
    for (; *value != '\0'; ++value) {
        const auto byte = static_cast<unsigned char>(*value);
        switch (byte) {
        case '&':
            m_text.append("&amp;");
            break;
        case '<':
            m_text.append("&lt;");
            break;
        case '>':
            m_text.append("&gt;");
            break;
        case '"':
            m_text.append("&quot;");
            break;
        default:
            if (iscntrl(byte)) {
                char entity[sizeof("&#x00;")];
                snprintf(entity, sizeof(entity), "&#x%02X;", byte);
                m_text.append(entity);
            } else {
                m_text.push_back(*value);
            }
        }
    }
    m_text.append("\"");
    return *this;
}

SetMessage& SetMessage::Close(const char* ending) {
    m_text.append(ending);
    return *this;
}

const std::string& SetMessage::Finish() {
    return m_text.append("</VariCfgSec>");
}
