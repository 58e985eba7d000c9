// SPDX-License-Identifier: GPL-2.0-only
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <gtest/gtest.h>

#include "CBB/Util/Clock.h"
#include "CBB/Util/Event.h"
#include "CBB/Util/Handle.h"
#include "CBB/Util/Semaphore.h"
#include "CBB/Util/Thread.h"
#include "tests/support/Capture.h"

namespace {

std::atomic<int64_t> g_step; // seconds that the wall clock is set by, whenever it is read

} // namespace

// Stands in for the C library's: an operator sets the clock.
extern "C" int gettimeofday(timeval* now, void*) noexcept {
    static std::atomic<int64_t> set{0};
    timespec real;
    clock_gettime(CLOCK_REALTIME, &real);
    now->tv_sec = static_cast<time_t>(real.tv_sec + (set += g_step));
    now->tv_usec = static_cast<suseconds_t>(real.tv_nsec / 1000);
    return 0;
}

namespace {

uint64_t SteadyMs() {
    using namespace std::chrono;
    return static_cast<uint64_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

TEST(Clock, IsNotMovedBySettingTheTimeOfDay) {
    SemHandle semaphore = nullptr;
    ASSERT_EQ(0, SemCreate(0, &semaphore));
    for (const int step : {-3600, 3600}) {
        g_step = step;
        Event event;
        ClockStart();
        const uint64_t start = SteadyMs();
        SleepMs(30);
        EXPECT_EQ(kHandleTimedOut, SemTimedWait(semaphore, 30));
        EXPECT_GE(SteadyMs() - start, 58U) << step;
        EXPECT_NEAR(ClockMs(), 5058, 5000) << step;
        EXPECT_NE(0, EventWait(&event, 100)) << step;
        EXPECT_LT(SteadyMs() - start, 10000U) << step;
    }
    g_step = 0;
    EXPECT_EQ(0, SemDestroy(semaphore));
}

TEST(Semaphore, CountsAndReportsByNumber) {
    for (const auto call : {SemGetValue, SemPost, SemWait, SemDestroy})
        EXPECT_EQ(2, call(nullptr));
    SemHandle semaphore = nullptr;
    EXPECT_EQ(kHandleCallFailed, SemCreate(static_cast<unsigned>(SEM_VALUE_MAX) + 1, &semaphore));
    ASSERT_EQ(0, SemCreate(1, &semaphore));
    EXPECT_EQ(0, SemPost(semaphore) + SemTimedWait(semaphore, 0));
    EXPECT_EQ(1, SemGetValue(semaphore));
    EXPECT_EQ(0, SemTimedWait(semaphore, 50));
    EXPECT_EQ(kHandleTimedOut, SemTimedWait(semaphore, 50));
    EXPECT_EQ(0, SemDestroy(semaphore));
}

size_t g_stack;

void* MeasureAndWait(void* measured) {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &g_stack);
    pthread_attr_destroy(&attributes);
    EventSignal(static_cast<Event*>(measured));
    Event never;
    EventWait(&never, 0);
    return nullptr;
}

TEST(Thread, HasItsStackAndStopsWhereItWaits) {
    Event measured;
    ThreadHandle* thread = nullptr;
    EXPECT_EQ(kHandleNoThread, ThreadCreate(MeasureAndWait, &measured, &thread, 1));
    for (const size_t asked : {0, 0x200000}) {
        const auto create = asked != 0 ? ThreadCreateSystemScope : ThreadCreate;
        ASSERT_EQ(0, create(MeasureAndWait, &measured, &thread, asked));
        EXPECT_EQ(0, EventWait(&measured, 0));
        EXPECT_EQ(0, ThreadStopAndFree(thread));
        EXPECT_EQ(asked != 0 ? asked : kDefaultThreadStack, g_stack);
    }
}

TEST(Lock, GuardsHoldAndReleaseOnce) {
    CMutex mutex;
    {
        MutexGuard guard(mutex.Get());
        EXPECT_EQ(EBUSY, pthread_mutex_trylock(mutex.Get()));
        MutexGuardRelease(guard);
        EXPECT_EQ(0, pthread_mutex_trylock(mutex.Get()));
    }
    EXPECT_EQ(EBUSY, pthread_mutex_trylock(mutex.Get())) << "a released guard unlocked again";
    pthread_mutex_unlock(mutex.Get());
    MutexGuard(nullptr).Release();
    RwLockHandle lock = RwLockCreate();
    RwLockGuard writer(lock, 1);
    RwLockGuard(lock, 1).Release(); // refused as a deadlock: must not unlock the first
    EXPECT_EQ(EBUSY, pthread_rwlock_tryrdlock(lock));
    writer.Release();
    RwLockGuard reader(lock, 0), second(lock, 0);
    EXPECT_EQ(EBUSY, pthread_rwlock_trywrlock(lock));
    reader.Release();
    second.Release();
    EXPECT_EQ(0, pthread_rwlock_trywrlock(lock));
    EXPECT_EQ(0, pthread_rwlock_unlock(lock) + RwLockDestroy(lock));
}

TEST(Event, KeepsASignalForOneWait) {
    Event event;
    EventSignal(&event);
    EXPECT_EQ(0, EventWait(&event, 0));
    while (SteadyMs() % 1000 == 0) {
    } // at every other time 999 ms more are in the next second
    EXPECT_EQ(EINVAL, EventWait(&event, 1999)) << "the deadline was normalised";
    uint64_t start;
    int result;
    do { // a time at which 50 ms more are not
        start = SteadyMs();
        result = EventWait(&event, 1050);
    } while (result == EINVAL);
    EXPECT_EQ(ETIMEDOUT, result) << "the signal was not taken back";
    EXPECT_GE(SteadyMs() - start, 1049U);
}

TEST(Clock, CountsFromItsReference) {
    EXPECT_LT(ClockMs(), 1000U) << "a first use without ClockStart counts from itself";
    g_stStopwatch = {{10, 900000}, {12, 100000}};
    EXPECT_EQ("DEBUG::run time duration : 1s+200ms\n", Capture(StopwatchPrint).out);
    SleepMs(20);
    const uint32_t before = ClockMs();
    EXPECT_GE(before, 19U);
    ClockStart();
    EXPECT_LT(ClockMs(), before);
}

std::atomic<int> g_alarms;

TEST(Clock, ASignalShortensNoSleep) {
    signal(SIGALRM, [](int) { ++g_alarms; });
    const itimerval every = {{0, 7000}, {0, 7000}};
    setitimer(ITIMER_REAL, &every, nullptr);
    const uint64_t start = SteadyMs();
    SleepMs(80);
    EXPECT_GE(SteadyMs() - start, 79U);
    signal(SIGALRM, SIG_IGN);
    EXPECT_GT(g_alarms, 0);
}

} // namespace
