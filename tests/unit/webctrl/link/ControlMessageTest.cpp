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

TEST(ControlMessage, FindsTheFirstSection) {
    for (const auto& [text, name] : {std::pair{"<VariCfgSec Action=''>text<a/><b/>", "0a"},
                                     {"<VariCfgSec Action=''>", "-1"},
                                     {"<VariCfgSec><a/>", "-1"}}) {
        TiXmlDocument document;
        TiXmlElement* section = nullptr;
        const int result = CWebCtrl().GetParaSection(document, text, &section);
        EXPECT_EQ(std::to_string(result) + (section != nullptr ? section->Value() : ""), name);
    }
}

TEST(ControlMessage, FindsRootAttributesByExactName) {
    const std::string text = "<VariCfgSec Action=\"DEVICE_SET\" a=\"&lt;1\" A=\"2\" long=\"" +
                             std::string(600, 'l') + "\" Result=\"7\"><x Result=\"8\"/>";
    const auto value = [&text](const char* name) {
        char found[kAttrValueCapacity] = "";
        const int result = CWebCtrl().GetParaAttrValue(text.c_str(), name, found);
        return std::to_string(result) + found + " ";
    };
    EXPECT_EQ(value("Action") + value("a") + value("A") + value("Result") + value("result"),
              "0DEVICE_SET 0<1 02 07 -1 ");
    EXPECT_EQ(value("long"), "0" + std::string(kAttrValueCapacity - 1, 'l') + " ");
}

TEST(ControlMessage, GivesTheParserNoTextThatNestsDeeply) {
    const std::string most = Repeat(16, "<a>") + Repeat(16, "</a>"), deep = "<a>" + most + "</a>";
    for (const std::string& text :
         {most, Repeat(128, "<a/>"), Repeat(40, "<a x='/>'></a>"), Repeat(40, "<a x=\"<b><c>\"/>"),
          Repeat(40, "<!-- x -->"), Repeat(40, "<?y?></stray>"), Repeat(17, "<a/>") + "<a x='",
          Repeat(300, "<!-- <a> -->") + Repeat(40, "<![CDATA[<a><a>]]>"),
          "<?xml version=\"1.0\" encoding='x'?>" + most + most})
        EXPECT_TRUE(IsShallowXml(text.c_str())) << text;
    for (const std::string& text :
         {deep, most.substr(0, 48) + "<a/>" + most.substr(48), Repeat(129, "<a/>"),
          "<!-- ' -->" + deep, "<r><![CDATA[ \" ]]>" + most + "</r>", Repeat(22, "</a>") + deep,
          Repeat(17, "<\x7f>"), "<!DOCTYPE a '>" + deep, "<2 '>" + deep,
          // A reader that takes one of these for a comment, or for an open quote, misses what is
          // nested.
          "<?xml version=\"><!--\"?>" + deep + "-->",
          "<?xml x\" version=\"?><!--\"?>" + deep + "-->", "<?xml x='?>" + deep + "'?>"})
        EXPECT_FALSE(IsShallowXml(text.c_str())) << text;
}
