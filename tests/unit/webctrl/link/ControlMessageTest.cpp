// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Link/ControlMessage.h"

#include <tinyxml.h>

#include "CBB/WebCtrl/WebCtrl.h"
#include "tests/unit/Unit.h"

TEST(ControlMessage, ClassifiesRequestsAndPassesOverReplies) {
    // The text, its type or 9, and what is printed behind it.
    const std::tuple<std::string, int, std::string> cases[] = {
        {"<VariCfgSec Action=\"BROAD_SEARCH\"/>", 0, "support cmd:BROAD_SEARCH."},
        {"<VariCfgSec Action=\"DEVICE_QUERY\"><stDisplay>", 1, "support cmd:DEVICE_QUERY."},
        {"<VariCfgSec Action=\"DEVICE_SET\" a=\"\" Result=\"0\">", 2, "support cmd:DEVICE_SET."},
        {"<VariCfgSec Action=\"DEVICE_REBOOT\">", 3, "support cmd:DEVICE_REBOOT."},
        {"<VariCfgSec Action=\"DEVICE_FORMAT\">", 4, "support cmd:DEVICE_FORMAT."},
        {"<VariCfgSec Action=\"device_set\">", 5, "support cmd:device_set."},
        {"<VariCfgSec Action=\"DEVICE_SET\" Result=\"0\"/>", 9, "is resp msg, do't handle."},
        {"<VariCfgSec Result=\"0\" Action=\"DEVICE_SET\"/>", 9,
         "first attribute name is not Action."},
        {"<VariCfgSec>", 9, "get first pAttribute failed."},
        {"<varicfgsec Action=\"DEVICE_SET\"/>", 9, "xmlDoc.FirstChildElement[VariCfgSec] failed."},
        {"", 9, "xmlDoc.FirstChildElement[VariCfgSec] failed."},
    };
    for (const auto& [text, type, line] : cases) {
        int found = 9, result = 1;
        const auto classify = [&, sent = text.c_str()] {
            result = CWebCtrl().GetParaCmdType(sent, &found);
        };
        EXPECT_EQ(Capture(classify).out, "----------------------CWebCtrl::GetParaCmdType, data:" +
                                             text + ".\nCWebCtrl::GetParaCmdType, " + line + "\n");
        EXPECT_EQ(std::pair(found, result), std::pair(type, type == 9 ? -1 : 0)) << text;
    }
}

TEST(ControlMessage, FindsRootAttributesByExactName) {
    const std::string text = "<VariCfgSec Action=\"DEVICE_SET\" a=\"&lt;1\" A=\"2\" long=\"" +
                             std::string(600, 'l') + "\" Result=\"7\"><x Result=\"8\"/>";
    const std::string values[][2] = {{"Action", "DEVICE_SET"},
                                     {"a", "<1"},
                                     {"A", "2"},
                                     {"Result", "7"},
                                     {"result", ""},
                                     {"long", std::string(kAttrValueCapacity - 1, 'l')}};
    for (const auto& [name, value] : values) {
        char found[kAttrValueCapacity] = "";
        EXPECT_EQ(CWebCtrl().GetParaAttrValue(text.c_str(), name.c_str(), found),
                  value.empty() ? -1 : 0);
        EXPECT_EQ(found, value) << name;
    }
}

TEST(ControlMessage, GivesTheParserNoTextThatNestsDeeply) {
    const auto times = [](int count, const std::string& part) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += part;
        return text;
    };
    const std::string most = times(16, "<a>") + times(16, "</a>"), deep = "<a>" + most + "</a>";
    for (const std::string& text :
         {most, times(100, "<a/>"), times(40, "<a x='/>'></a>"), times(40, "<a x=\"<b><c>\"/>"),
          times(40, "<!-- x -->"), times(40, "<?y?></stray>"),
          times(300, "<!-- <a> -->") + times(40, "<![CDATA[<a><a>]]>"),
          "<?xml version=\"1.0\" encoding='x'?>" + most + most})
        EXPECT_TRUE(IsShallowXml(text.c_str())) << text;
    for (const std::string& text :
         {deep, most.substr(0, 48) + "<a/>" + most.substr(48), times(129, "<a/>"),
          "<!-- ' -->" + deep, "<r><![CDATA[ \" ]]>" + most + "</r>", times(22, "</a>") + deep,
          "<!DOCTYPE a '>" + deep, "<2 '>" + deep,
          // A reader that takes one of these for a comment, or for an open quote, misses what is
          // nested.
          "<?xml version=\"><!--\"?>" + deep + "-->",
          "<?xml x\" version=\"?><!--\"?>" + deep + "-->", "<?xml x='?>" + deep + "'?>"})
        EXPECT_FALSE(IsShallowXml(text.c_str())) << text;
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
