// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Link/ControlMessage.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <tinyxml.h>

#include "CBB/WebCtrl/WebCtrl.h"

namespace {

constexpr int kMaxXmlDepth = 16;
// The depth is counted as a well-formed text has it. A text made to mislead that count still
// cannot nest deeper than it has elements, and this many take some 40 KiB of the stack.
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
    doc.SetTabSize(0); // nobody asks where in the text something stood
    doc.Parse(text);
    return doc.FirstChildElement("VariCfgSec");
}

// The root's first attribute, which has to be the Action; null, with its line printed, otherwise.
const TiXmlAttribute* ActionOf(const TiXmlElement* root) {
    const TiXmlAttribute* first = root->FirstAttribute();
    if (first == nullptr) {
        puts("CWebCtrl::GetParaCmdType, get first pAttribute failed.");
        return nullptr;
    }
    if (strcmp(first->Name(), "Action") != 0) {
        puts("CWebCtrl::GetParaCmdType, first attribute name is not Action.");
        return nullptr;
    }
    return first;
}

// Whether a `<` begins an element, rather than ending one or being markup of another kind.
bool OpensElement(const char* at) {
    return at[1] != '\0' && at[1] != '/' && at[1] != '!' && at[1] != '?';
}

// The `>` that ends the tag (or the text's end): one inside quotes ends nothing.
const char* EndOfTag(const char* at) {
    for (char quote = '\0'; *at != '\0' && (quote != '\0' || *at != '>'); ++at) {
        if (quote != '\0')
            quote = *at == quote ? '\0' : quote;
        else if (*at == '"' || *at == '\'')
            quote = *at;
    }
    return at;
}

} // namespace

int CWebCtrl::GetParaCmdType(const char* text, int* type) {
    printf("----------------------CWebCtrl::GetParaCmdType, data:%s.\n", text);
    TiXmlDocument doc;
    const TiXmlElement* root = ParseRoot(doc, text);
    if (root == nullptr) {
        puts("CWebCtrl::GetParaCmdType, xmlDoc.FirstChildElement[VariCfgSec] failed.");
        return -1;
    }
    const TiXmlAttribute* action = ActionOf(root);
    if (action == nullptr)
        return -1;
    const TiXmlAttribute* second = action->Next();
    if (second != nullptr && strcmp(second->Name(), "Result") == 0) {
        puts("CWebCtrl::GetParaCmdType, is resp msg, do't handle.");
        return -1;
    }
    *type = DEVICE_UNSUPPORTED;
    for (const Command& command : kCommands) {
        if (strcmp(action->Value(), command.action) == 0)
            *type = command.type;
    }
    printf("CWebCtrl::GetParaCmdType, support cmd:%s.\n", action->Value());
    return 0;
}

int CWebCtrl::GetParaAttrValue(const char* text, const char* name, char* value) {
    TiXmlDocument doc;
    const TiXmlElement* root = ParseRoot(doc, text);
    if (root == nullptr)
        return -1;
    for (const TiXmlAttribute* attribute = ActionOf(root); attribute != nullptr;
         attribute = attribute->Next()) {
        if (strcmp(attribute->Name(), name) == 0) {
            snprintf(value, kAttrValueCapacity, "%s", attribute->Value());
            return 0;
        }
    }
    return -1;
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
    int elements = 0;
    for (const char* at = strchr(text, '<'); at != nullptr; at = strchr(at + 1, '<'))
        elements += OpensElement(at);
    if (elements <= kMaxXmlDepth || elements > kMaxXmlElements)
        return elements <= kMaxXmlDepth;

    int depth = 0;
    for (const char* at = strchr(text, '<'); at != nullptr; at = strchr(at, '<')) {
        const bool closes = at[1] == '/';
        const bool opens = OpensElement(at);
        at = EndOfTag(at + 1);
        depth += opens && at[-1] != '/' ? 1 : closes ? -1 : 0;
        if (depth > kMaxXmlDepth)
            return false;
    }
    return true;
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

int ImportSection(CWebCtrl& controller, const char* reply,
                  const std::function<int(const TiXmlElement*)>& import) {
    TiXmlDocument doc;
    TiXmlElement* section = nullptr;
    return controller.GetParaSection(doc, reply, &section) == 0 ? import(section) : -1;
}
