// SPDX-License-Identifier: GPL-2.0-only
#include "tools/recorder_sim/Recorder.h"

#include <gtest/gtest.h>

#include "tools/recorder_sim/State.h"

namespace {

constexpr char kNoAnswer[] = "(none)";

Recorder Sample(Faults faults = {}) {
    return Recorder(SampleState(), std::move(faults), [](const XmlNode&) { return true; });
}

std::string Query(const std::string& section) {
    return "<VariCfgSec Action=\"DEVICE_QUERY\"><" + section + "></VariCfgSec>";
}

std::string Set(const std::string& content) {
    return "<VariCfgSec Action=\"DEVICE_SET\">" + content + "</VariCfgSec>";
}

XmlNode SectionOf(const std::string& answer) {
    std::string error;
    const auto root = ParseXml(answer, error);
    EXPECT_EQ(error, "") << answer;
    return root && !root->children.empty() ? root->children[0] : XmlNode{};
}

} // namespace

TEST(Recorder, GivesEveryTextBack) {
    const std::string text = "a\"b<c&d>e'f\t\n\x01\x7F \U0001F68C \xF0\x9F&amp;&#x41; ";
    Recorder recorder = Sample();
    recorder.Answer(Set("<stWifi strFD_SSID=\"" + EscapeXml(text) +
                        "\" strFD_Passwd=\"&#233;&#x1F68C;&#39; & &co; &#; &#x\"/>"));
    XmlNode wifi = SectionOf(*recorder.Answer(Query("stWifi")));
    EXPECT_EQ(*wifi.FindAttribute("strFD_SSID"), text);
    EXPECT_EQ(*wifi.FindAttribute("strFD_Passwd"), "\u00E9\U0001F68C' & &co; &#; &#x");
    XmlNode reread;
    std::string error;
    ASSERT_TRUE(ParseState(ToDocument(recorder.State()), reread, error)) << error;
    EXPECT_EQ(ToLine(reread), ToLine(recorder.State()));
}

TEST(Recorder, SetChangesOnlyWhatItNames) {
    const struct {
        const char* content;
        const char* place;
    } sets[] = {
        {"<stBaseInfo STRFD_curtime=\"v\"/>", "stBaseInfo.strFD_CurTime"},
        {"<stVideoMirror><stVideoMirrorPara><VChn_0 ucFD_UpDown=\"v\"/></stVideoMirrorPara>"
         "</stVideoMirror>",
         "stVideoMirror.stVideoMirrorPara.VChn_0.ucFD_UpDown"},
        {"<stGB28181><stGB28181SubID><SUBDEVID_0 strFD_LensId=\"v\"/></stGB28181SubID>",
         "stGB28181.stGB28181SubID.SUBDEVID_0.strFD_LensId"},
    };
    for (const auto& set : sets) {
        Recorder recorder = Sample();
        recorder.Answer(Set(set.content));
        XmlNode expected = SampleState();
        ASSERT_TRUE(Override(expected, std::string(set.place) + "=v"));
        EXPECT_EQ(ToLine(recorder.State()), ToLine(expected));
    }
}

TEST(Recorder, RefusesAndChangesNothing) {
    const std::string set = "<VariCfgSec Action=\"DEVICE_SET\" Result=";
    const std::string bad = "<VariCfgSec Action=\"\" Result=\"1\"/>";
    const std::string longText(kMaxRequest, 'x');
    std::string nested;
    for (int i = 0; i < 1000; ++i)
        nested += "<a>";
    const struct {
        std::string request, answer;
    } cases[] = {
        {"", bad},
        {"hello", bad},
        {std::string("\0<", 2), bad},
        {"<Other Action=\"DEVICE_QUERY\"><stCMS/></Other>", bad},
        {"<VariCfgSec><stCMS/></VariCfgSec>", bad},
        {"<VariCfgSec Foo=\"1\" Action=\"DEVICE_QUERY\"><stCMS/></VariCfgSec>", bad},
        {Set("<stWifi strFD_SSID=\"" + longText + "\"/>"), bad},
        {nested, bad},
        {"<VariCfgSec Action=\"DEVICE_REBOOT\"/>",
         "<VariCfgSec Action=\"DEVICE_REBOOT\" Result=\"2\"/>"},
        {"<VariCfgSec Action=\"a&quot;b" + std::string(2000, '&') + "\"><stCMS/></VariCfgSec>",
         "<VariCfgSec Action=\"" + EscapeXml("a\"b" + std::string(61, '&')) + "\" Result=\"2\"/>"},
        {Query("stcms"), "<VariCfgSec Action=\"DEVICE_QUERY\" Result=\"3\"/>"},
        {Set(""), set + "\"3\"/>"},
        {Set("<stNone a=\"1\"/>"), set + "\"3\"/>"},
        {Set("<stCMS usFD_Port=\"1\" usFD_Ports=\"2\"/>"), set + "\"4\"/>"},
        {Set("<stVideoMirror><stVideoMirrorPara><VChn_1 ucFD_UpDown=\"1\"/>"), set + "\"4\"/>"},
        {set + "\"0\"><stCMS usFD_Port=\"1\"/></VariCfgSec>", kNoAnswer},
    };
    Recorder recorder = Sample();
    for (const auto& c : cases)
        EXPECT_EQ(recorder.Answer(c.request).value_or(kNoAnswer), c.answer) << c.request;
    EXPECT_EQ(ToLine(recorder.State()), ToLine(SampleState()));

    Recorder unstored(SampleState(), {}, [](const XmlNode&) { return false; });
    EXPECT_EQ(*unstored.Answer(Set("<stCMS usFD_Port=\"1\"/>")), set + "\"5\"/>");
    EXPECT_EQ(ToLine(unstored.State()), ToLine(SampleState()));
}

TEST(Recorder, LeavesAttributesOutFromTheEnd) {
    XmlNode state = SampleState();
    XmlNode& section = *state.FindChild("stGB28181");
    for (size_t length : {1, 200, 400, 2000}) {
        *section.FindAttribute("strFD_DeviceUser") = std::string(length, '"');
        Recorder recorder(state, {}, nullptr);
        const std::string answer = *recorder.Answer(Query("stGB28181"));
        EXPECT_LE(answer.size(), kMaxAnswer);
        const std::string whole = ToLine(section);
        const std::string kept = ToLine(SectionOf(answer));
        const std::string open = kept.substr(0, kept.size() - strlen("/>"));
        EXPECT_TRUE(kept == whole || whole.compare(0, open.size(), open) == 0) << answer;
    }
}

TEST(Recorder, MisbehavesOnDemand) {
    Faults faults;
    faults.dropEvery = 3;
    faults.silent = {"stCMS"};
    faults.result = 7;
    Recorder recorder = Sample(faults);
    EXPECT_NE(recorder.Answer(Query("stDisplay"))->find("Result=\"7\"><stDisplay "),
              std::string::npos);
    EXPECT_EQ(*recorder.Answer(Set("<stDisplay strLanguage=\"US\"/>")),
              "<VariCfgSec Action=\"DEVICE_SET\" Result=\"7\"/>");
    EXPECT_FALSE(recorder.Answer(Query("stDisplay")));
    EXPECT_FALSE(recorder.Answer(Query("stCMS")));
    EXPECT_EQ(ToLine(recorder.State()), ToLine(SampleState()));

    Faults garbage;
    garbage.garbage = true;
    Recorder noisy = Sample(garbage);
    std::string first = *noisy.Answer(Query("stCMS"));
    std::string error;
    ParseXml(first, error);
    EXPECT_NE(error, "") << first;
    EXPECT_NE(*noisy.Answer(Query("stCMS")), first);
}
