// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Link/ControlMessage.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <tinyxml.h>

#include "CBB/WebCtrl/WebCtrl.h"
#include "tests/support/Capture.h"

namespace {

std::string CaptureStdout(const std::function<void()>& body) {
    return Capture(body).out;
}

TEST(ControlMessage, ClassifiesRequestsAndPassesOverReplies) {
    const struct {
        const char* text;
        int result;
        int type;
        const char* line; // printed behind the text itself
    } cases[] = {
        {"<VariCfgSec Action=\"BROAD_SEARCH\"/>", 0, 0, "support cmd:BROAD_SEARCH."},
        {"<VariCfgSec Action=\"DEVICE_QUERY\"><stDisplay></VariCfgSec>", 0, 1,
         "support cmd:DEVICE_QUERY."},
        {"<VariCfgSec Action=\"DEVICE_SET\" Foo=\"1\" Result=\"0\">", 0, 2,
         "support cmd:DEVICE_SET."},
        {"<VariCfgSec Action=\"DEVICE_REBOOT\">", 0, 3, "support cmd:DEVICE_REBOOT."},
        {"<VariCfgSec Action=\"DEVICE_FORMAT\">", 0, 4, "support cmd:DEVICE_FORMAT."},
        {"<VariCfgSec Action=\"device_set\">", 0, 5, "support cmd:device_set."},
        {"<VariCfgSec Action=\"DEVICE_SET\" Result=\"0\"/>", -1, 9, "is resp msg, do't handle."},
        {"<VariCfgSec Result=\"0\" Action=\"DEVICE_SET\"/>", -1, 9,
         "first attribute name is not Action."},
        {"<VariCfgSec>", -1, 9, "get first pAttribute failed."},
        {"<varicfgsec Action=\"DEVICE_SET\"/>", -1, 9,
         "xmlDoc.FirstChildElement[VariCfgSec] failed."},
        {"", -1, 9, "xmlDoc.FirstChildElement[VariCfgSec] failed."},
    };
    for (const auto& each : cases) {
        CWebCtrl controller;
        int type = 9;
        const std::string printed = CaptureStdout(
            [&] { EXPECT_EQ(controller.GetParaCmdType(each.text, &type), each.result); });
        EXPECT_EQ(type, each.type) << each.text;
        EXPECT_EQ(printed, std::string("----------------------CWebCtrl::GetParaCmdType, data:") +
                               each.text + ".\nCWebCtrl::GetParaCmdType, " + each.line + "\n");
    }
}

TEST(ControlMessage, FindsRootAttributesByExactName) {
    const std::string text = "<VariCfgSec Action=\"DEVICE_SET\" a=\"&lt;1\" A=\"2\" long=\"" +
                             std::string(600, 'l') + "\" Result=\"7\"><x Result=\"8\"/>";
    const struct {
        const char* name;
        int result;
        std::string value;
    } cases[] = {
        {"Action", 0, "DEVICE_SET"},
        {"a", 0, "<1"},
        {"A", 0, "2"},
        {"Result", 0, "7"},
        {"result", -1, ""},
        {"long", 0, std::string(kAttrValueCapacity - 1, 'l')},
    };
    for (const auto& each : cases) {
        CWebCtrl controller;
        char value[kAttrValueCapacity] = "";
        EXPECT_EQ(controller.GetParaAttrValue(text.c_str(), each.name, value), each.result);
        EXPECT_EQ(value, each.value) << each.name;
    }
}

TEST(ControlMessage, GivesTheParserNoTextThatNestsDeeply) {
    const auto nested = [](int depth) {
        std::string text;
        for (int i = 0; i < depth; ++i)
            text += "<a>";
        for (int i = 0; i < depth; ++i)
            text += "</a>";
        return text;
    };
    const auto repeated = [](const char* part, int count) {
        std::string text = "<r>";
        for (int i = 0; i < count; ++i)
            text += part;
        return text + "</r>";
    };
    const struct {
        std::string text;
        bool shallow;
    } cases[] = {
        {nested(16), true},
        {nested(17), false},
        {nested(16).insert(48, "<a/>"), false},
        {repeated("<a/>", 100), true},
        {repeated("<a x='/>'></a>", 40), true},
        {repeated("<a x=\"<b><c>\"/>", 40), true},
        {repeated("<!-- x -->", 40), true},
        {repeated("<?y?></stray>", 40), true},
        {repeated("<a/>", 128), false},
        {repeated("<!-- <a> -->", 300) + repeated("<![CDATA[<a><a>]]>", 40), true},
        {"<!-- ' -->" + nested(17), false},
        {"<r><![CDATA[ \" ]]>" + nested(16) + "</r>", false},
        {repeated("</a>", 20) + "</a></a>" + nested(17), false},
        {"<!DOCTYPE a '>" + nested(17), false},
        {"<2 '>" + nested(17), false},
        {"<?xml version=\"1.0\" encoding='x'?>" + nested(16) + nested(16), true},
        // A reader that takes one of these for a comment, or for an open quote, misses what is
        // nested.
        {"<?xml version=\"><!--\"?>" + nested(17) + "-->", false},
        {"<?xml x\" version=\"?><!--\"?>" + nested(17) + "-->", false},
        {"<?xml x='?>" + nested(17) + "'?>", false},
    };
    for (const auto& each : cases)
        EXPECT_EQ(IsShallowXml(each.text.c_str()), each.shallow) << each.text;
}

TEST(ControlMessage, WritesParseBackToTheSameText) {
    std::string value;
    for (int byte = 1; byte < 256; ++byte)
        value += static_cast<char>(byte);
    SetMessage message;
    message.Open("e").Number("n", 4294967295u).Text("t", value.c_str()).Close("/>");
    TiXmlDocument doc;
    doc.Parse(message.Finish().c_str());
    ASSERT_FALSE(doc.Error()) << doc.ErrorDesc();
    const TiXmlElement* element = doc.RootElement()->FirstChildElement("e");
    EXPECT_EQ(*element->Attribute(std::string("t")), value);
    EXPECT_STREQ(element->Attribute("n"), "4294967295");
}

} // namespace
