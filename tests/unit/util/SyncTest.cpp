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
#include <tuple>

namespace {

int64_t MonotonicMs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

TEST(Semaphore, CountsAndReportsByNumber) {
    EXPECT_EQ(kHandleNull, SemGetValue(nullptr));
    EXPECT_EQ(kHandleNull, SemTimedWait(nullptr, 50));
    EXPECT_EQ(kHandleNull, SemDestroy(nullptr));
    SemHandle semaphore = nullptr;
    EXPECT_EQ(kHandleCallFailed, SemCreate(static_cast<unsigned>(SEM_VALUE_MAX) + 1, &semaphore));
    ASSERT_EQ(0, SemCreate(2, &semaphore));
    EXPECT_EQ(0, SemTimedWait(semaphore, 0));
    EXPECT_EQ(0, SemTimedWait(semaphore, 50));
    EXPECT_EQ(0, SemGetValue(semaphore));
    const int64_t start = MonotonicMs();
    EXPECT_EQ(kHandleTimedOut, SemTimedWait(semaphore, 50));
    EXPECT_GE(MonotonicMs() - start, 49);
    EXPECT_EQ(0, SemPost(semaphore));
    EXPECT_EQ(1, SemGetValue(semaphore));
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
    EXPECT_EQ(nullptr, thread);
    EXPECT_EQ(kHandleNull, ThreadStop(nullptr));
    for (const auto create : {ThreadCreate, ThreadCreateSystemScope}) {
        for (const size_t asked : {0, 0x200000}) {
            ASSERT_EQ(0, create(MeasureAndWait, &measured, &thread, asked));
            EXPECT_EQ(0, EventWait(&measured, 0));
            EXPECT_EQ(0, ThreadStopAndFree(thread));
            EXPECT_EQ(asked != 0 ? asked : kDefaultThreadStack, g_stack);
        }
    }
}

TEST(Lock, GuardsHoldAndReleaseOnce) {
    MutexHandle mutex = MutexCreate();
    {
        AutoLock guard(mutex);
        EXPECT_EQ(EBUSY, pthread_mutex_trylock(mutex));
    }
    {
        MutexGuard guard(mutex);
        EXPECT_EQ(EBUSY, pthread_mutex_trylock(mutex));
        MutexGuardRelease(guard);
        ASSERT_EQ(0, pthread_mutex_trylock(mutex));
    }
    EXPECT_EQ(EBUSY, pthread_mutex_trylock(mutex)) << "a released guard unlocked again";
    pthread_mutex_unlock(mutex);
    MutexGuard(nullptr).Release();
    EXPECT_EQ(0, MutexDestroy(mutex));

    RwLockHandle lock = RwLockCreate();
    {
        RwLockGuard writer(lock, 1);
        RwLockGuard(lock, 1).Release(); // refused as a deadlock: must not unlock the first
        EXPECT_EQ(EBUSY, pthread_rwlock_tryrdlock(lock));
        writer.Release();
        RwLockGuard reader(lock, 0);
        EXPECT_EQ(EBUSY, pthread_rwlock_trywrlock(lock));
        RwLockGuard second(lock, 0);
    }
    EXPECT_EQ(0, pthread_rwlock_trywrlock(lock));
    pthread_rwlock_unlock(lock);
    EXPECT_EQ(0, RwLockDestroy(lock));
}

TEST(Event, KeepsASignalForOneWait) {
    Event event;
    EventSignal(&event);
    EXPECT_EQ(0, EventWait(&event, 0));
    timeval now;
    do { // 50 ms from then is the same second, 999 ms the next
        gettimeofday(&now, nullptr);
    } while (now.tv_usec < 1000 || now.tv_usec > 500000);
    EXPECT_EQ(EINVAL, EventWait(&event, 1999)) << "the deadline was normalised";
    EXPECT_EQ(ETIMEDOUT, EventWait(&event, 50)) << "the signal was not taken back";
    ThreadHandle* thread = nullptr;
    const auto signal = [](void* raised) -> void* {
        EventSignal(static_cast<Event*>(raised));
        ThreadExit(nullptr);
    };
    ASSERT_EQ(0, ThreadCreate(signal, &event, &thread, 0));
    EXPECT_EQ(0, EventWait(&event, 0));
    ThreadStopAndFree(thread);
}

TEST(Clock, CountsFromItsReference) {
    EXPECT_LT(ClockMs(), 1000U) << "a first use without ClockStart counts from itself";
    const std::tuple<timeval, timeval, uint32_t> cases[] = {{{10, 900000}, {12, 100000}, 1200},
                                                            {{10, 1999}, {11, 1000}, 1000},
                                                            {{10, 0}, {9, 0}, 0U - 1000},
                                                            {{0, 0}, {4294968, 0}, 704}};
    for (const auto& [from, to, ms] : cases) {
        EXPECT_EQ(ms, MsBetween(from, to));
    }
    SleepMs(20);
    const uint32_t before = ClockMs();
    EXPECT_GE(before, 19U);
    ClockStart();
    EXPECT_LT(ClockMs(), before);
    const uint64_t now = static_cast<uint64_t>(time(nullptr));
    EXPECT_LE(WallClockMs() / 1000 - now, 2U);
}

std::atomic<int> g_alarms;

TEST(Clock, ASignalShortensNoSleep) {
    signal(SIGALRM, [](int) { ++g_alarms; });
    const itimerval every = {{0, 7000}, {0, 7000}};
    const itimerval never = {};
    setitimer(ITIMER_REAL, &every, nullptr);
    const int64_t start = MonotonicMs();
    SleepMs(80);
    EXPECT_GE(MonotonicMs() - start, 79);
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_GT(g_alarms, 2);
}

TEST(Clock, StopwatchText) {
    const std::pair<Stopwatch, const char*> cases[] = {
        {{{10, 900000}, {12, 100000}}, "DEBUG::run time duration : 1s+200ms\n"},
        {{{10, 100000}, {12, 100999}}, "DEBUG::run time duration : 2s+0ms\n"},
        {{{10, 0}, {9, 999999}}, "DEBUG::time error.\n"},
    };
    for (const auto& [watch, text] : cases) {
        g_stStopwatch = watch;
        EXPECT_EQ(text, Capture(StopwatchPrint).out);
    }
}

} // namespace
