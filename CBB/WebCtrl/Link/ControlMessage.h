// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <memory>
#include <string>
#include <string_view>

class TiXmlDocument;
class TiXmlElement;

// The texts of a control message: one XML document a datagram, rooted at `VariCfgSec`, whose first
// attribute is `Action` and whose one child element is a parameter section.

// Builds a `DEVICE_QUERY` text. The section is left unclosed, as the main application takes it:
// `stDisplay` becomes `<stDisplay>`. For a closed one, `<stVersion />`, give `stVersion /`.
std::string QueryText(std::string_view section);

// Whether the XML parser, which recurses, may be given `text` on the web thread's small stack:
// false when elements nest deeper than 16 or there are more than 128 of them. What stands in
// comments, CDATA and other markup is no element.
bool IsShallowXml(const char* text);

// Builds a `DEVICE_SET` text. Values are escaped as XML entities; the caller has cut them before.
//
//     SetMessage message;
//     message.Open("stWifi").Number("ucFD_WorkMode", 2).Close("/>");
//     message.Finish()  ->  <VariCfgSec Action="DEVICE_SET"><stWifi
//     ucFD_WorkMode="2"/></VariCfgSec>
class SetMessage {
public:
    SetMessage() : m_text("<VariCfgSec Action=\"DEVICE_SET\">") {}

    // Begins an element: `<NAME`.
    SetMessage& Open(const char* element);
    // ` NAME="value"`.
    SetMessage& Number(const char* attribute, unsigned value);
    SetMessage& Text(const char* attribute, const char* value);
    // Ends an element or tag as the wire has it: `>`, `/>`, ` />` or `</NAME>`.
    SetMessage& Close(const char* ending);
    // Closes the root and gives the whole text. Nothing can be added afterwards.
    const std::string& Finish();

private:
    std::string m_text;
};

// A received control message, parsed. The texts that it gives live as long as it does.
class Reply {
public:
    // `text` is NUL-terminated. A text that is no control message has nothing to give.
    explicit Reply(const char* text);
    ~Reply();
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;

    bool HasRoot() const { return m_root != nullptr; }
    // The value of the root's first attribute; null, with a line printed, unless that is `Action`.
    const char* Action() const;
    // The value of `Result` where it stands right behind `Action`; null elsewhere.
    const char* Result() const;
    // The value of the root's attribute of exactly this name, `Action` being the first one.
    const char* Attribute(const char* name) const;

private:
    std::unique_ptr<TiXmlDocument> m_document;
    const TiXmlElement* m_root;
};
