// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/DebugPrint.h"

#include "CBB/Util/HexDump.h"
#include "tests/unit/Unit.h"

TEST(DebugPrint, ShowsFromTheMinimumLevel) {
    EXPECT_EQ(1, DebugGetLevel());
    const int cases[][3] = {{1, 0, 0}, {3, 1, 0}, {3, 3, 1}, {3, 4, 1}, {0, -1, 0}, {0, 0, 1}};
    for (const auto& [minimum, level, shown] : cases) {
        DebugSetLevel(minimum);
        const auto print = [printed = level] {
            DebugPrint(printed, DEBUG_INFO_FORMAT("x=%d"), 7);
            HexDump(printed, "d", "\x01\xff", 2);
            HexDump(printed, "d", "", 0);
        };
        const char* text = "\033[32m\033[1mx=7\033[0m<HEX:d>(2)-[01 ff ]\n";
        EXPECT_EQ(shown ? text : "", Capture(print).out);
    }
}

TEST(DebugPrint, IsCutAndCanBeSilenced) {
    const auto print = [] { DebugPrint(9, "%s", std::string(5000, 'x').c_str()); };
    EXPECT_EQ(std::string(1023, 'x'), Capture(print).out);
    for (const int level : {4, 5, -1})
        DebugSetLevel(level);
    EXPECT_EQ(4, DebugGetLevel());
    DebugLessVerbose();
    EXPECT_EQ("Debug[5]-enable=1\n", Capture(DebugLessVerbose).out);
    EXPECT_EQ("", Capture(print).out);
    DebugSetEnable(0);
    EXPECT_EQ("Debug[4]-enable=0\n", Capture(DebugMoreVerbose).out);
    EXPECT_EQ("", Capture(print).out);
    DebugSetEnable(1);
    DebugSetLevel(1);
    DebugMoreVerbose();
    EXPECT_EQ("Debug[0]-enable=1\n", Capture(DebugMoreVerbose).out);
}
