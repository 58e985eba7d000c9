// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/HexText.h"

#include "tests/unit/Unit.h"

TEST(HexText, ConvertsWithinItsBounds) {
    // The text and its length, the capacity, the results of HexTextToBytes, its bytes, and the
    // results of HexPairsToBytes and HexTextToInt with its value.
    const std::tuple<const char*, int, int, int, std::string, int, int, int> cases[] = {
        {"0aFF", 4, 8, 0, "\x0a\xff", 2, 0, 0x0aff},
        {"0aFF", 4, 1, -1, "", 2, 0, 0x0aff},
        {"1g", 2, 8, -1, "", 0, -1, 16},
        {"f", 1, 8, 0, "\xf0", 1, 0, 15},
        {"g1", 2, 8, -1, "", 0, -1, 0},
        {"abc", 3, 8, 0, "\xab\xc0", 2, 0, 0xabc},
        {"abc", 3, 1, 0, "\xab", 2, 0, 0xabc},
        {"abc", -3, 8, 0, "", 0, 0, 0},
        {"12\0", 4, 8, -1, "", 1, -1, 0x1200},
        {"1FFFFFFFF", 9, 8, 0, "\x1f\xff\xff\xff\xf0", 5, 0, -1},
    };
    for (const auto& [chars, length, room, rc, bytes, pairs, intRc, number] : cases) {
        // On the heap and without a terminator, so that a read past the length is seen.
        const std::vector<char> text(chars, chars + std::max(length, 0));
        uint8_t out[8] = {};
        int capacity = room, value = 77;
        EXPECT_EQ(rc, HexTextToBytes(text.data(), length, out, &capacity)) << chars;
        EXPECT_EQ(bytes, std::string(out, out + (rc == 0 ? capacity : 0))) << chars;
        EXPECT_TRUE(rc != 0 || out[capacity] == 0) << chars;
        EXPECT_EQ(pairs, HexPairsToBytes(out, text.data(), length)) << chars;
        const int converted = HexTextToInt(text.data(), length, &value);
        EXPECT_EQ(std::pair(intRc, number), std::pair(converted, value)) << chars;
    }
}
