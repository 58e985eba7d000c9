// SPDX-License-Identifier: GPL-2.0-only
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "CBB/Util/BufPool.h"
#include "CBB/Util/HexText.h"
#include "CBB/Util/KvTable.h"
#include "CBB/Util/Md5.h"
#include "tests/support/Capture.h"

namespace {

TEST(BufPool, WrapsAndTakesOnlyWhatFits) {
    CBufPool pool;
    char out[32] = {};
    EXPECT_EQ("parameter invalid, size = 0\n", Capture([&] { EXPECT_EQ(-1, pool.Init(0)); }).out);
    EXPECT_EQ(0, pool.Init(10));
    EXPECT_EQ(9U, pool.Write("abcdefghi", 9));
    EXPECT_EQ(1U, pool.Skip(1));
    EXPECT_EQ(2U, pool.Write("jklmn", 5)) << "one byte at the end, one at the start";
    EXPECT_EQ("error m_stBufPool.u64Buffersize <= m_stBufPool.u64Busynum\n",
              Capture([&] { EXPECT_EQ(0U, pool.Write("x", 1)); }).err);
    EXPECT_EQ(10U, pool.Peek(out, 32));
    EXPECT_STREQ("bcdefghijk", out);
    EXPECT_EQ(10U, pool.Skip(11));
    // Both positions are 1: nine bytes more end exactly at the storage's end.
    EXPECT_EQ(9U, pool.Write("123456789", 9));
    EXPECT_EQ(1U, pool.Write("0", 9));
    EXPECT_EQ(10U, pool.Read(out, 10));
    EXPECT_STREQ("1234567890", out);
    EXPECT_EQ(40U, pool.Init(40) + pool.FreeSpace());
}

TEST(BufPool, LittleEndianIntegersAndEmptyRings) {
    CBufPool pool;
    EXPECT_EQ(0, pool.ReadU8()) << "there is no storage yet";
    EXPECT_EQ(0, pool.Init(5));
    pool.Write("\x80\xfe\xff", 3);
    EXPECT_EQ(0x80, pool.ReadU8());
    EXPECT_EQ(0U, pool.ReadU32()) << "two bytes are too few, and stay";
    EXPECT_EQ(-2, pool.ReadU16());
    pool.Write("\x01\x02\x03\x04\xff", 5);
    EXPECT_EQ(0x04030201U, pool.ReadU32());
    EXPECT_EQ(0xff, pool.ReadU8());
    EXPECT_EQ(1, pool.ReadU8()) << "a stale byte";
    EXPECT_EQ(6U, pool.FreeSpace()) << "the count fell below 0";
    char out[8];
    EXPECT_EQ(8U, pool.Peek(out, 8));
    EXPECT_EQ("\x02\x03\x04\xff\x01\x02\x03\x04", std::string(out, 8));
    Capture([&] { EXPECT_EQ(0U, pool.Write("x", 1)); });
    EXPECT_EQ(0U, pool.FreeSpace()) << "a write sets the count right";
}

TEST(BufPool, AReaderGetsWhatAWriterPut) {
    CBufPool pool;
    pool.Init(61);
    std::thread writer([&pool] {
        for (uint32_t i = 0; i < 5000;) // a byte that counts up
            i += pool.FreeSpace() > 0 ? pool.Write(std::string(1, static_cast<char>(i)).data(), 1)
                                      : 0;
    });
    char got[16];
    for (uint32_t i = 0, n = 0; i < 5000; i += n) {
        n = pool.Read(got, sizeof(got));
        for (uint32_t k = 0; k < n; ++k)
            EXPECT_EQ(static_cast<char>(i + k), got[k]);
    }
    writer.join();
}

TEST(HexText, ConvertsWithinItsBounds) {
    // The text and its length, the capacity, the results of HexTextToBytes, its bytes, and the
    // results of HexPairsToBytes and HexTextToInt with its value.
    using Case = std::tuple<const char*, int, int, int, std::string, int, int, int>;
    const Case cases[] = {
        {"0aFF", 4, 8, 0, "\x0a\xff", 2, 0, 0x0aff},
        {"0aFF", 4, 1, -1, "", 2, 0, 0x0aff},
        {"1g", 2, 8, -1, "", 0, -1, 16},
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
        int capacity = room;
        int value = 77;
        EXPECT_EQ(rc, HexTextToBytes(text.data(), length, out, &capacity)) << chars;
        EXPECT_EQ(bytes, std::string(out, out + (rc == 0 ? capacity : 0))) << chars;
        EXPECT_EQ(pairs, HexPairsToBytes(out, text.data(), length)) << chars;
        EXPECT_EQ(intRc, HexTextToInt(text.data(), length, &value)) << chars;
        EXPECT_EQ(number, value) << chars;
    }
}

using Texts = std::vector<std::string>;

TEST(KvTable, PutRemoveDumpAndKeys) {
    // The values that a linker's .hash section holds for these symbols.
    EXPECT_EQ(0x077905a6U, KvHash("printf", 0x7FFFFFFF));
    EXPECT_EQ(0x10fe9fU, KvHash("\xff\xff\xef\xaf", 0x7FFFFFFF)); // bytes, not signed chars
    KvTable* table = KvCreate();
    // "b" + 0x12 and "c" + 0x02 hash alike: one chain.
    for (const char* key : {"b\x12", "a", "c\x02", "a", "~", "\x7f"})
        for (const char* value : {"old", key})
            KvPut(&table->chains[KvHash(key, 4096)], KvNodeCreate(key, value), &table->count);
    EXPECT_EQ("[97]: a=a\n[126]: ~=~\n[127]: \x7f=\x7f\n[1586]: b\x12=b\x12,c\x02=c\x02\n",
              Capture([table] { EXPECT_EQ(0, KvDump(table)); }).out);
    KvRemove(&table->chains[1586], "b\x12", &table->count);
    uint32_t n = 0;
    uint32_t count = 0;
    const char** keys = KvKeys(table, &n, 1);
    EXPECT_EQ((Texts{"a", "c\x02", "~", "\x7f"}), Texts(keys, keys + n));
    const char** missing = KvKeysNotIn(keys, 3, keys + 2, 2, &count);
    EXPECT_EQ((Texts{"\x7f"}), Texts(missing, missing + count));
    free(keys);
    free(missing);
    EXPECT_EQ(0, KvDestroy(table));
}

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

} // namespace
