// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <functional>
#include <string>

class CWebCtrl;
class TiXmlElement;

// The texts of a control message: one XML document a datagram, rooted at `VariCfgSec`, whose first
// attribute is `Action` and whose one child element is a parameter section.

/// Query texts, sent as they stand. The main application takes an unclosed section element.
namespace QueryText {
constexpr char Display[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stDisplay></VariCfgSec>";
constexpr char BaseInfo[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stBaseInfo></VariCfgSec>";
constexpr char VideoMirror[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stVideoMirror></VariCfgSec>";
constexpr char NetWorkMode[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stNetWorkMode></VariCfgSec>";
constexpr char Cms[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stCMS></VariCfgSec>";
constexpr char Wifi[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stWifi></VariCfgSec>";
constexpr char WifiAp[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stWifiAp></VariCfgSec>";
constexpr char MobileGNet[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stMobileGNet></VariCfgSec>";
constexpr char GB28181[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stGB28181></VariCfgSec>";
constexpr char Version[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stVersion /></VariCfgSec>";
constexpr char SystemInfo[] = "<VariCfgSec Action=\"DEVICE_QUERY\"><stSystemInfo /></VariCfgSec>";
} // namespace QueryText

/// Whether the XML parser, which recurses, may be given `text` on the web thread's small stack:
/// false when elements nest deeper than 16 or there are more than 128 of them.
bool IsShallowXml(const char* text);

/// Builds a `DEVICE_SET` text. Values are escaped as XML entities; they are cut by the caller.
///
///     SetMessage message;
///     message.Open("stWifi").Number("ucFD_WorkMode", 2).Close("/>");
///     message.Finish()  ->  <VariCfgSec Action="DEVICE_SET"><stWifi
///     ucFD_WorkMode="2"/></VariCfgSec>
class SetMessage {
public:
    SetMessage() : m_text("<VariCfgSec Action=\"DEVICE_SET\">") {}

    /// Begins an element: `<NAME`.
    SetMessage& Open(const char* element);
    /// ` NAME="value"`.
    SetMessage& Number(const char* attribute, unsigned value);
    SetMessage& Text(const char* attribute, const char* value);
    /// Ends an element or tag as the wire has it: `>`, `/>`, ` />` or `</NAME>`.
    SetMessage& Close(const char* ending);
    /// The whole text, root closed. The object is used up.
    const std::string& Finish();

private:
    std::string m_text;
};

/// Parses a reply and hands its section element to `import`, whose result is returned; -1 when the
/// reply holds no section. The element lives as long as the call.
int ImportSection(CWebCtrl& controller, const char* reply,
                  const std::function<int(const TiXmlElement*)>& import);
