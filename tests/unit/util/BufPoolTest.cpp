// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/BufPool.h"

#include "tests/unit/Unit.h"

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
    EXPECT_EQ(10U, pool.Peek(out, 10));
    EXPECT_STREQ("1234567890", out);
    pool.Init(10);
    EXPECT_EQ(0, pool.ReadU8()) << "nothing is left of what was written";
    EXPECT_EQ(0, pool.Init(40));
    EXPECT_EQ(40U, pool.Write(("z" + std::string(49, 'y')).c_str(), 50));
    EXPECT_EQ('z', pool.ReadU8()) << "both positions are 0 again";
}

TEST(BufPool, LittleEndianIntegersAndEmptyRings) {
    CBufPool pool;
    EXPECT_EQ(0U, pool.ReadU8() + pool.FreeSpace()) << "there is no storage yet";
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

TEST(BufPool, AReaderGetsWhatTwoWritersPut) {
    constexpr int kEach = 300000;
    CBufPool pool;
    pool.Init(2 * kEach);
    const auto write = [&pool](char byte) {
        for (int i = 0; i < kEach; ++i)
            pool.Write(&byte, 1);
    };
    std::thread zeros(write, 0), ones(write, 1);
    std::string got(2 * kEach, 'x');
    const uint32_t early = pool.Read(got.data(), kEach);
    zeros.join();
    ones.join();
    EXPECT_EQ(2U * kEach - early, pool.Read(&got[early], 2 * kEach));
    EXPECT_EQ(kEach, std::count(got.begin(), got.end(), 0));
}
