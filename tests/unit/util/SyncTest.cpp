// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Clock.h"
#include "CBB/Util/Event.h"
#include "CBB/Util/Handle.h"
#include "CBB/Util/Semaphore.h"
#include "CBB/Util/Thread.h"
#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>

namespace {

TEST(Semaphore, CountsAndReportsByNumber) {
    EXPECT_EQ(kHandleNull, SemGetValue(nullptr));
    SemHandle semaphore = nullptr;
    EXPECT_EQ(kHandleCallFailed, SemCreate(static_cast<unsigned>(SEM_VALUE_MAX) + 1, &semaphore));
    ASSERT_EQ(0, SemCreate(1, &semaphore));
    EXPECT_EQ(0, SemPost(semaphore) + SemTimedWait(semaphore, 0));
    EXPECT_EQ(1, SemGetValue(semaphore));
    EXPECT_EQ(0, SemTimedWait(semaphore, 50));
    const uint64_t start = WallClockMs();
    EXPECT_EQ(kHandleTimedOut, SemTimedWait(semaphore, 50));
    EXPECT_GE(WallClockMs() - start, 49U);
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
    while (WallClockMs() % 1000 - 1 > 500) {
    } // until 50 ms from then is the same second, and 999 ms the next
    EXPECT_EQ(EINVAL, EventWait(&event, 1999)) << "the deadline was normalised";
    EXPECT_EQ(ETIMEDOUT, EventWait(&event, 50)) << "the signal was not taken back";
}

TEST(Clock, CountsFromItsReference) {
    EXPECT_LT(ClockMs(), 1000U) << "a first use without ClockStart counts from itself";
    EXPECT_EQ(1200U, MsBetween({10, 900000}, {12, 100000}));
    EXPECT_EQ(704U, MsBetween({0, 0}, {4294968, 0}));
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
    const uint64_t start = WallClockMs();
    SleepMs(80);
    EXPECT_GE(WallClockMs() - start, 79U);
    signal(SIGALRM, SIG_IGN);
    EXPECT_GT(g_alarms, 2);
}

} // namespace
