// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Clock.h"

#include "CBB/Util/Semaphore.h"
#include "tests/unit/Unit.h"

std::atomic<int64_t> g_wallClockUs{1700000000000000};
static std::atomic<int64_t> g_wallStepUs{250999}; // by which it moves on whenever it is read

// Stands in for the C library's: a test has the time of day in hand.
extern "C" int gettimeofday(timeval* now, void*) noexcept {
    const int64_t us = g_wallClockUs += g_wallStepUs;
    *now = {us / 1000000, us % 1000000};
    return 0;
}

static int64_t SteadyMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

TEST(Clock, CountsFromItsReferenceAndNoSignalShortensASleep) {
    static std::atomic<int> alarms;
    signal(SIGALRM, [](int) { ++alarms; });
    const itimerval every = {{0, 7000}, {0, 7000}};
    int64_t start = SteadyMs();
    EXPECT_EQ(ClockMs(), 0U) << "a first use without ClockStart counts from itself";
    setitimer(ITIMER_REAL, &every, nullptr);
    SleepMs(1000);
    EXPECT_GE(std::min<int64_t>(ClockMs(), SteadyMs() - start), 999);
    signal(SIGALRM, SIG_IGN);
    EXPECT_GT(alarms, 0);
    start = SteadyMs();
    ClockStart();
    const uint32_t since = ClockMs();
    EXPECT_LE(since, SteadyMs() - start + 1);
}

TEST(Clock, IsNotMovedBySettingTheTimeOfDay) {
    SemHandle semaphore = nullptr;
    ASSERT_EQ(0, SemCreate(0, &semaphore));
    for (const int64_t step : {-3600000000, 3600000000}) {
        g_wallStepUs = step;
        ClockStart();
        const int64_t start = SteadyMs();
        SleepMs(30);
        EXPECT_EQ(4100, SemTimedWait(semaphore, 30));
        EXPECT_GE(SteadyMs() - start, 58) << step;
        EXPECT_GE(ClockMs(), 58U) << step;
        EXPECT_LT(ClockMs(), 3600000U) << step;
    }
    EXPECT_EQ(0, SemDestroy(semaphore));
}

TEST(Clock, AStopwatchPrintsWhatHasPassed) {
    g_wallClockUs = 1500000; // the second ends meanwhile
    g_wallStepUs = 3599250999;
    StopwatchStart();
    StopwatchStop();
    EXPECT_EQ(g_wallClockUs.exchange(3000000), 7200001998);
    EXPECT_EQ(WallClockMs(), 3602250U);
    EXPECT_EQ(Capture(StopwatchPrint).out, "DEBUG::run time duration : 3599s+250ms\n");
    std::swap(g_stStopwatch.start, g_stStopwatch.end);
    EXPECT_EQ(Capture(StopwatchPrint).out, "DEBUG::time error.\n");
}
