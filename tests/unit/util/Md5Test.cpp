// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Md5.h"

#include "CBB/Util/HexText.h"
#include "tests/unit/Unit.h"

TEST(Md5, EveryPadding) {
    uint8_t digest[16], expected[16];
    HexPairsToBytes(expected, "9370237cf2c013418ada10f8f1b5210b", 32);
    // The digest of the digests of all texts of less than 200 letters.
    Md5Context all, one;
    Md5Init(&all);
    for (size_t n = 0; n < 200; ++n) {
        Md5Init(&one);
        Md5Update(&one, std::string(n, 'a').data(), n);
        Md5Final(&one, digest);
        Md5Update(&all, digest, 16);
    }
    Md5Final(&all, digest);
    EXPECT_TRUE(std::equal(expected, expected + 16, digest));
}
