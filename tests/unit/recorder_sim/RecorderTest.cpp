// SPDX-License-Identifier: GPL-2.0-only
#include "tools/recorder_sim/Recorder.h"

#include "tests/unit/Unit.h"
#include "tools/recorder_sim/State.h"

static Recorder Sample(Faults faults = {}, bool stores = true) {
    return Recorder(SampleState(), std::move(faults), [stores](const XmlNode&) { return stores; });
}

static std::string Message(const std::string& action, const std::string& content) {
    return "<VariCfgSec Action=\"DEVICE_" + action + ">" + content + "</VariCfgSec>";
}

TEST(Recorder, GivesEveryTextBackAndLeavesOutWhatIsTooMuch) {
    const std::string text = "a\"b<c&d>e'f\t\n\x01\x7F \U0001F68C \xF0\x9F&amp;&#x41; ";
    const std::string odd = "&#233;&#x1F68C;&#39; & &co; &#; &#x";
    Recorder recorder = Sample();
    recorder.Answer(Message("SET\"", "<stWifi STRFD_ssid=\"" + EscapeXml(text) +
                                         "\" strFD_Passwd=\"" + odd + "\"/>"));
    XmlNode expected = SampleState(), reread;
    Override(expected, "stWifi.strFD_SSID=" + text);
    Override(expected, "stWifi.strFD_Passwd=\u00E9\U0001F68C' & &co; &#; &#x");
    EXPECT_EQ(*recorder.Answer(Message("QUERY\"", "<stWifi>")),
              Message("QUERY\" Result=\"0\"", ToLine(*expected.FindChild("stWifi"))));
    std::string error;
    ASSERT_TRUE(ParseState("\xEF\xBB\xBF" + ToDocument(recorder.State()), reread, error)) << error;
    EXPECT_EQ(ToLine(reread), ToLine(expected));

    recorder.Answer(Message("SET\"", "<stWifi strFD_SSID=\"" + std::string(900, 'x') + "\"/>"));
    const std::string answer = *recorder.Answer(Message("QUERY\"", "<stWifi>"));
    const std::string kept = answer.substr(0, answer.find("/></VariCfgSec>"));
    reread = recorder.State();
    EXPECT_EQ(Message("QUERY\" Result=\"0\"", ToLine(*reread.FindChild("stWifi"))).find(kept), 0u);
    EXPECT_TRUE(kept.size() > 900 && answer.size() <= kMaxAnswer) << answer;
}

TEST(Recorder, RefusesAndChangesNothing) {
    const std::string begin = "<VariCfgSec Action=\"", set = begin + "DEVICE_SET\" Result=";
    const std::string bad = begin + "\" Result=\"1\"/>";
    const std::pair<std::string, std::string> cases[] = {
        {std::string("\0<", 2), bad},
        {Repeat(1000, "<a>"), bad},
        {"<Other Action=\"DEVICE_QUERY\"><stCMS/></Other>", bad},
        {"<VariCfgSec Foo=\"1\" Action=\"DEVICE_QUERY\"><stCMS/></VariCfgSec>", bad},
        {Message("SET\"", "<stWifi strFD_SSID=\"" + std::string(kMaxRequest, 'x') + "\"/>"), bad},
        {begin + "a&quot;b" + std::string(2000, '&') + "\"><stCMS/></VariCfgSec>",
         begin + EscapeXml("a\"b" + std::string(61, '&')) + "\" Result=\"2\"/>"},
        {Message("QUERY\"", "<stcms>"), begin + "DEVICE_QUERY\" Result=\"3\"/>"},
        {Message("SET\"", "<stCMS usFD_Port=\"1\" usFD_Ports=\"2\"/>"), set + "\"4\"/>"},
        {Message("SET\"", "<stGB28181><stGB28181SubID><SUBDEVID_9/>"), set + "\"4\"/>"},
        {Message("SET\" Result=\"0\"", "<stCMS usFD_Port=\"1\"/>"), "(none)"},
    };
    Recorder recorder = Sample(), unstored = Sample({}, false);
    for (const auto& [request, answer] : cases)
        EXPECT_EQ(recorder.Answer(request).value_or("(none)"), answer) << request;
    EXPECT_EQ(*unstored.Answer(Message("SET\"", "<stCMS usFD_Port=\"1\"/>")), set + "\"5\"/>");
    for (const Recorder* each : {&recorder, &unstored})
        EXPECT_EQ(ToLine(each->State()), ToLine(SampleState()));
}

TEST(Recorder, MisbehavesOnDemand) {
    Recorder recorder = Sample({7, 3, false, {}}); // a result of its own, every third is lost
    const std::string query = Message("QUERY\"", "<stDisplay>");
    EXPECT_NE(recorder.Answer(query)->find("Result=\"7\"><stDisplay "), std::string::npos);
    EXPECT_EQ(*recorder.Answer(Message("SET\"", "<stDisplay strLanguage=\"US\"/>")),
              "<VariCfgSec Action=\"DEVICE_SET\" Result=\"7\"/>");
    EXPECT_FALSE(recorder.Answer(query));
    EXPECT_EQ(ToLine(recorder.State()), ToLine(SampleState()));
}
