// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/ExchangeQueue.h"

#include "tests/unit/Unit.h"

TEST(ExchangeQueue, LeavesTheOthers20TurnsAnd100MsBehindEach10) {
    ExchangeQueue queue;
    uint64_t nowMs = 1010;
    std::string answered;
    const auto clock = [&] { return nowMs; };
    const auto answer = [&](unsigned long id) {
        answered += static_cast<char>(id);
        nowMs += 5;
    };
    // Who is answered in so many turns that begin so many milliseconds later.
    const auto serve = [&](int turns, uint64_t laterMs, bool othersServed = true) {
        answered.clear();
        for (nowMs += laterMs; turns > 0; --turns)
            queue.Serve(othersServed, answer, clock);
        return answered;
    };
    queue.Made(1000, 1009);
    EXPECT_TRUE(queue.IsFree(1009));
    queue.Made(1000, nowMs);
    for (const char id : {'a', 'b', 'c', 'd'})
        EXPECT_TRUE(queue.Enter(id));
    EXPECT_EQ(serve(21, 99) + serve(1, 1), "ab");
    EXPECT_EQ(serve(20, 100) + serve(1, 0), "cd");
    EXPECT_FALSE(queue.IsFree(nowMs + 100));
    EXPECT_EQ(serve(20, 0), "");
    EXPECT_FALSE(queue.IsFree(nowMs + 99));
    EXPECT_TRUE(queue.IsFree(nowMs + 100));
    queue.Enter('e');
    EXPECT_FALSE(queue.IsFree(nowMs + 100));
    EXPECT_EQ(serve(1, 0, false), "e"); // nobody else has anything to do
    EXPECT_TRUE(queue.IsFree(nowMs));
    for (int i = 0; i < 64; ++i)
        EXPECT_TRUE(queue.Enter('f'));
    EXPECT_FALSE(queue.Enter('g'));
    queue.Leave('f');
    EXPECT_FALSE(queue.IsWaitedFor());
}
