// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Clock.h"

#include "CBB/Util/Semaphore.h"
#include "tests/unit/Unit.h"

static std::atomic<int64_t> g_step; // seconds that the wall clock is set by, whenever it is read

// Stands in for the C library's: an operator sets the clock.
extern "C" int gettimeofday(timeval* now, void*) noexcept {
    static std::atomic<int64_t> set{0};
    timespec real;
    clock_gettime(CLOCK_REALTIME, &real);
    now->tv_sec = static_cast<time_t>(real.tv_sec + (set += g_step));
    now->tv_usec = static_cast<suseconds_t>(real.tv_nsec / 1000);
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
    for (const int step : {-3600, 3600}) {
        g_step = step;
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
    g_step = 3600;
    StopwatchStart();
    StopwatchStop();
    std::tie(g_stStopwatch.start.tv_usec, g_stStopwatch.end.tv_usec) = std::pair(3000, 1999);
    EXPECT_EQ(Capture(StopwatchPrint).out, "DEBUG::run time duration : 3599s+998ms\n");
    std::swap(g_stStopwatch.start, g_stStopwatch.end);
    EXPECT_EQ(Capture(StopwatchPrint).out, "DEBUG::time error.\n");
}
