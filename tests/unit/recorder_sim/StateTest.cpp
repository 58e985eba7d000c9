// SPDX-License-Identifier: GPL-2.0-only
#include "tools/recorder_sim/State.h"

#include <gtest/gtest.h>

TEST(State, RefusesWhatIsNoState) {
    for (const char* text : {"", "plain", "<Other/>", "<RecorderState><stCMS></RecorderState>",
                             "<RecorderState><a b=\"1\" b=\"2\"/></RecorderState>"}) {
        XmlNode state;
        std::string error;
        EXPECT_FALSE(ParseState(text, state, error)) << text;
        EXPECT_NE(error, "") << text;
    }
    XmlNode state;
    std::string error;
    EXPECT_TRUE(ParseState("\xEF\xBB\xBF<RecorderState/>", state, error)) << error;
    EXPECT_FALSE(SaveState("/nowhere/state.xml", state, error));
    EXPECT_FALSE(SaveState("/proc", state, error));
}

TEST(State, OverrideNeedsAPlace) {
    XmlNode state = SampleState();
    for (const char* assignment :
         {"", "stCMS", "=1", "stCMS.=1", "stNone.a=1", "stCMS.usFD_Port", "a.b.c.d=1"}) {
        EXPECT_FALSE(Override(state, assignment)) << assignment;
    }
    EXPECT_TRUE(Override(state, "stCMS.strFD_Domain=a.b=c"));
    EXPECT_EQ(*state.FindChild("stCMS")->FindAttribute("strFD_Domain"), "a.b=c");
}
