// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Md5.h"

#include "tests/unit/Unit.h"

TEST(Md5, EveryPadding) {
    const char expected[] = "\x93\x70\x23\x7c\xf2\xc0\x13\x41\x8a\xda\x10\xf8\xf1\xb5\x21\x0b";
    uint8_t digest[16];
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
    EXPECT_EQ(memcmp(expected, digest, 16), 0);
}
