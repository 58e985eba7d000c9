// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/BufPool.h"
#include "CBB/Util/HexText.h"
#include "CBB/Util/KvTable.h"
#include "CBB/Util/Md5.h"
#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(BufPool, WrapsAndTakesOnlyWhatFits) {
    CBufPool pool;
    char out[32] = {};
    EXPECT_EQ("parameter invalid, size = 0\n", Capture([&] { EXPECT_EQ(-1, pool.Init(0)); }).out);
    ASSERT_EQ(0, pool.Init(10));
    EXPECT_EQ(9U, pool.Write("abcdefghi", 9));
    EXPECT_EQ(1U, pool.Skip(1));
    EXPECT_EQ(2U, pool.Write("jklmn", 5)) << "one byte at the end, one at the start";
    EXPECT_EQ("error m_stBufPool.u64Buffersize <= m_stBufPool.u64Busynum\n",
              Capture([&] { EXPECT_EQ(0U, pool.Write("x", 1)); }).err);
    EXPECT_EQ(10U, pool.Peek(out, 32));
    EXPECT_STREQ("bcdefghijk", out);
    EXPECT_EQ(8U, pool.Skip(8));
    EXPECT_EQ(2U, pool.Read(out, 32));
    EXPECT_STREQ("jkdefghijk", out);
    // Both positions are 1: nine bytes more end exactly at the storage's end.
    EXPECT_EQ(9U, pool.Write("123456789", 9));
    EXPECT_EQ(1U, pool.Write("0", 9));
    EXPECT_EQ(10U, pool.Read(out, 10));
    EXPECT_STREQ("1234567890", out);
    for (const int size : {10, 4, 4000}) {
        pool.Write("z", 1);
        ASSERT_EQ(0, pool.Init(size));
        EXPECT_EQ(static_cast<uint32_t>(size), pool.FreeSpace());
    }
}

TEST(BufPool, LittleEndianIntegersAndEmptyRings) {
    CBufPool pool;
    EXPECT_EQ(0, pool.ReadU8()) << "there is no storage yet";
    EXPECT_EQ(0U, pool.Skip(3));
    ASSERT_EQ(0, pool.Init(5));
    pool.Write("\x80\x01\x02", 3);
    EXPECT_EQ(0x80, pool.ReadU8());
    EXPECT_EQ(0U, pool.ReadU32()) << "two bytes are too few, and stay";
    EXPECT_EQ(0x0201, pool.ReadU16());
    pool.Write("\x01\x02\x03\x04\xff", 5);
    EXPECT_EQ(0x04030201U, pool.ReadU32());
    EXPECT_EQ(0, pool.ReadU16());
    pool.Write("\xff", 1);
    EXPECT_EQ(-1, pool.ReadU16());
    EXPECT_EQ(2, pool.ReadU8()) << "a stale byte";
    EXPECT_EQ(6U, pool.FreeSpace()) << "the count fell below 0";
    char out[8];
    EXPECT_EQ(8U, pool.Peek(out, 8));
    EXPECT_EQ("\x03\x04\xff\xff\x02\x03\x04\xff", std::string(out, 8));
    EXPECT_NE("", Capture([&] { EXPECT_EQ(0U, pool.Write("x", 1)); }).err);
    EXPECT_EQ(0U, pool.FreeSpace()) << "a write sets the count right";
}

TEST(BufPool, AReaderGetsWhatAWriterPut) {
    CBufPool pool;
    ASSERT_EQ(0, pool.Init(61));
    std::string sent;
    for (int i = 0; i < 20000; ++i) {
        sent += static_cast<char>(i % 251);
    }
    std::string received;
    std::thread reader([&] {
        char out[17];
        while (received.size() < sent.size()) {
            received.append(out, pool.Read(out, sizeof(out)));
        }
    });
    for (size_t at = 0; at < sent.size();) {
        const uint32_t n = static_cast<uint32_t>(std::min<size_t>(7, sent.size() - at));
        at += pool.FreeSpace() > 0 ? pool.Write(&sent[at], n) : 0;
    }
    reader.join();
    EXPECT_TRUE(sent == received);
    EXPECT_EQ(61U, pool.FreeSpace());
}

TEST(HexText, ConvertsWithinItsBounds) {
    const struct {
        const char* text;
        int length, capacity, rc;
        const char* bytes;
        int pairs; // what HexPairsToBytes returns
        int intRc, value;
    } cases[] = {
        {"0aFF", 4, 8, 0, "\x0a\xff", 2, 0, 0x0aff},
        {"0aFF", 4, 1, -1, "", 2, 0, 0x0aff},
        {"0g", 2, 8, -1, "", 0, -1, 0},
        {"1g", 2, 8, -1, "", 0, -1, 16},
        {"abc", 3, 8, 0, "\xab\xc0", 2, 0, 0xabc},
        {"abc", 3, 1, 0, "\xab", 2, 0, 0xabc},
        {"abc", -3, 8, 0, "", 0, 0, 0},
        {"12\0", 4, 8, -1, "", 1, -1, 0x1200},
        {"1FFFFFFFF", 9, 8, 0, "\x1f\xff\xff\xff\xf0", 5, 0, -1},
    };
    for (const auto& c : cases) {
        // On the heap and without a terminator, so that a read past the length is seen.
        const std::vector<char> text(c.text, c.text + std::max(c.length, 0));
        uint8_t bytes[8] = {};
        int capacity = c.capacity;
        EXPECT_EQ(c.rc, HexTextToBytes(text.data(), c.length, bytes, &capacity)) << c.text;
        EXPECT_EQ(c.rc == 0 ? static_cast<int>(strlen(c.bytes)) : c.capacity, capacity) << c.text;
        EXPECT_TRUE(c.rc != 0 || memcmp(bytes, c.bytes, strlen(c.bytes) + 1) == 0) << c.text;
        EXPECT_EQ(c.pairs, HexPairsToBytes(bytes, text.data(), c.length)) << c.text;
        int value = 77;
        EXPECT_EQ(c.intRc, HexTextToInt(text.data(), c.length, &value)) << c.text;
        EXPECT_EQ(c.value, value) << c.text;
    }
}

void Put(KvTable* table, const char* key, const char* value) {
    KvPut(&table->chains[KvHash(key, table->buckets)], KvNodeCreate(key, value), &table->count);
}

std::vector<std::string> Texts(const char** texts, uint32_t n) {
    const std::vector<std::string> result(texts, texts + n);
    std::free(texts);
    return result;
}

TEST(KvTable, HashIsTheElfHash) {
    // The values that a linker's .hash section holds for these symbols.
    EXPECT_EQ(0x077905a6U, KvHash("printf", 0x7FFFFFFF));
    EXPECT_EQ(0x0b09985cU, KvHash("syscall", 0x7FFFFFFF));
    EXPECT_EQ(0x10fe9fU, KvHash("\xff\xff\xef\xaf", 0x7FFFFFFF));
    EXPECT_EQ(0U, KvHash("x", 0));
}

TEST(KvTable, PutRemoveDumpAndKeys) {
    EXPECT_EQ(-22, KvDestroy(nullptr));
    EXPECT_EQ(-22, KvDump(nullptr));
    KvTable* table = KvCreate();
    ASSERT_NE(nullptr, table);
    // "b" + 0x12 and "c" + 0x02 hash alike: one chain.
    for (const char* key : {"b\x12", "a", "c\x02", "a", "B"}) {
        Put(table, key, "old");
        Put(table, key, key);
    }
    EXPECT_EQ(4U, table->count);
    EXPECT_EQ("[66]: B=B\n[97]: a=a\n[1586]: b\x12=b\x12,c\x02=c\x02\n",
              Capture([table] { EXPECT_EQ(0, KvDump(table)); }).out);
    uint32_t n = 0;
    EXPECT_EQ((std::vector<std::string>{"B", "a", "b\x12", "c\x02"}),
              Texts(KvKeys(table, &n, 0), 4));
    KvNode** chain = &table->chains[KvHash("c\x02", table->buckets)];
    KvRemove(chain, "b\x12", &table->count);
    KvRemove(chain, "b\x12", &table->count);
    for (const char* key : {"~", "\x7f", "aa"}) {
        Put(table, key, "");
    }
    const char** keys = KvKeys(table, &n, 1);
    const char* candidates[] = {"x", "a", "\x7f", "x", ""};
    uint32_t count = 0;
    EXPECT_EQ((std::vector<std::string>{"x", "x", ""}),
              Texts(KvKeysNotIn(keys, n, candidates, 5, &count), 3));
    EXPECT_EQ(3U, count);
    EXPECT_EQ(0, KvContains(keys, 1, "~"));
    ASSERT_EQ(6U, n);
    EXPECT_EQ((std::vector<std::string>{"B", "a", "aa", "c\x02", "~", "\x7f"}), Texts(keys, 6));
    EXPECT_EQ(0, KvDestroy(table));
}

TEST(KvTable, ALongChainNeedsNoStack) {
    KvTable* table = KvCreate();
    ASSERT_NE(nullptr, table);
    KvNode** tail = &table->chains[0];
    for (int i = 0; i < 300000; ++i) { // linked by hand: putting each would walk the whole chain
        *tail = KvNodeCreate("k", "");
        tail = &(*tail)->next;
    }
    KvPut(&table->chains[0], KvNodeCreate("new", ""), &table->count);
    EXPECT_EQ(1U, table->count);
    KvRemove(&table->chains[0], "new", &table->count);
    EXPECT_EQ(nullptr, *tail);
    KvDestroy(table);
}

// The digest of the digests of all texts of n letters "a" below 200: each padding, in pieces.
void DigestOfDigests(size_t piece, uint8_t digest[16]) {
    const std::string letters(200, 'a');
    Md5Context all;
    Md5Init(&all);
    for (size_t n = 0; n < letters.size(); ++n) {
        Md5Context one;
        Md5Init(&one);
        for (size_t at = 0; at < n; at += piece) {
            Md5Update(&one, letters.data(), std::min(piece, n - at));
        }
        Md5Final(&one, digest);
        Md5Update(&all, digest, 16);
    }
    Md5Final(&all, digest);
}

TEST(Md5, EveryPaddingInAnyPieces) {
    uint8_t expected[16];
    HexPairsToBytes(expected, "9370237cf2c013418ada10f8f1b5210b", 32);
    for (const size_t piece : {1, 63, 64, 200}) {
        uint8_t digest[16];
        DigestOfDigests(piece, digest);
        EXPECT_EQ(0, memcmp(expected, digest, sizeof(digest))) << piece;
    }
}

} // namespace
