// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/BufPool.h"

#include "tests/unit/Unit.h"

using Results = std::vector<int64_t>; // of one call after the other

static std::string Peek(CBufPool& pool, uint32_t n) {
    std::string out(n, 'x');
    return out.substr(0, pool.Peek(out.data(), n));
}

TEST(BufPool, WrapsAndTakesOnlyWhatFits) {
    CBufPool pool;
    EXPECT_EQ("-1 parameter invalid, size = 0\n", Told([&] { return pool.Init(0); }));
    EXPECT_EQ(0, pool.Init(10));
    // At last one byte at the end, one at the start.
    EXPECT_EQ((Results{9, 1, 2}),
              (Results{pool.Write("abcdefghi", 9), pool.Skip(1), pool.Write("jklmn", 5)}));
    EXPECT_EQ("0 |error m_stBufPool.u64Buffersize <= m_stBufPool.u64Busynum\n",
              Told([&] { return pool.Write("x", 1); }));
    EXPECT_EQ("bcdefghijk", Peek(pool, 32));
    // Both positions are 1 then: nine bytes more end exactly at the storage's end.
    EXPECT_EQ((Results{10, 9, 1}),
              (Results{pool.Skip(11), pool.Write("123456789", 9), pool.Write("0", 9)}));
    EXPECT_EQ("1234567890", Peek(pool, 10));
    EXPECT_EQ((Results{0, 0, 0}), (Results{pool.Init(10), pool.ReadU8(), pool.Init(40)}));
    EXPECT_EQ(40U, pool.Write(("z" + std::string(49, 'y')).c_str(), 50));
    EXPECT_EQ('z', pool.ReadU8()) << "both positions are 0 again";
}

TEST(BufPool, LittleEndianIntegersAndEmptyRings) {
    CBufPool pool;
    EXPECT_EQ(0U, pool.ReadU8() + pool.FreeSpace()) << "there is no storage yet";
    EXPECT_EQ((Results{0, 3}), (Results{pool.Init(5), pool.Write("\x80\xfe\xff", 3)}));
    // Two bytes are too few for the second, and stay.
    EXPECT_EQ((Results{0x80, 0, -2}), (Results{pool.ReadU8(), pool.ReadU32(), pool.ReadU16()}));
    pool.Write("\x01\x02\x03\x04\xff", 5);
    EXPECT_EQ(0x04030201U, pool.ReadU32());
    // The second is a stale byte, at which the count falls below 0.
    EXPECT_EQ((Results{0xff, 1, 6}), (Results{pool.ReadU8(), pool.ReadU8(), pool.FreeSpace()}));
    EXPECT_EQ("\x02\x03\x04\xff\x01\x02\x03\x04", Peek(pool, 8));
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
