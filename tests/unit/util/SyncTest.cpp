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
#include <ctime>

namespace {

int64_t MonotonicMs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

// Waits for a moment in the first half of a second, so that half a second later is the same one.
void AwaitFirstHalf() {
    timeval now;
    do {
        gettimeofday(&now, nullptr);
    } while (now.tv_usec >= 400000);
}

TEST(Semaphore, CountsAndReportsByNumber) {
    EXPECT_EQ(kHandleNull, SemGetValue(nullptr));
    EXPECT_EQ(kHandleNull, SemWait(nullptr));
    EXPECT_EQ(kHandleNull, SemTimedWait(nullptr, 0));
    EXPECT_EQ(kHandleNull, SemDestroy(nullptr));
    SemHandle semaphore = nullptr;
    EXPECT_EQ(kHandleCallFailed, SemCreate(static_cast<unsigned>(SEM_VALUE_MAX) + 1, &semaphore));
    ASSERT_EQ(kHandleOk, SemCreate(3, &semaphore));
    EXPECT_EQ(0, SemWait(semaphore));
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

struct Probe {
    size_t stack;
    SemHandle ready;
    SemHandle never;
};

void* MeasureAndWait(void* arg) {
    Probe* probe = static_cast<Probe*>(arg);
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &probe->stack);
    pthread_attr_destroy(&attributes);
    SemPost(probe->ready);
    SemWait(probe->never);
    return nullptr;
}

TEST(Thread, HasItsStackAndStopsWhereItWaits) {
    Probe probe = {};
    ASSERT_EQ(0, SemCreate(0, &probe.ready));
    ASSERT_EQ(0, SemCreate(0, &probe.never));
    ThreadHandle* thread = nullptr;
    EXPECT_EQ(kHandleNoThread, ThreadCreate(MeasureAndWait, &probe, &thread, 1));
    EXPECT_EQ(nullptr, thread);
    EXPECT_EQ(kHandleNull, ThreadStop(nullptr));
    for (const auto create : {ThreadCreate, ThreadCreateSystemScope}) {
        for (const size_t asked : {size_t{0}, size_t{0x200000}}) {
            ASSERT_EQ(0, create(MeasureAndWait, &probe, &thread, asked));
            SemWait(probe.ready);
            EXPECT_EQ(0, ThreadStopAndFree(thread));
            EXPECT_EQ(asked != 0 ? asked : kDefaultThreadStack, probe.stack);
        }
    }
    SemDestroy(probe.ready);
    SemDestroy(probe.never);
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
        guard.Release();
    }
    EXPECT_EQ(EBUSY, pthread_mutex_trylock(mutex)) << "a released guard unlocked again";
    pthread_mutex_unlock(mutex);
    MutexGuard(nullptr).Release();
    EXPECT_EQ(0, MutexDestroy(mutex));

    RwLockHandle lock = RwLockCreate();
    {
        RwLockGuard reader(lock, 0);
        RwLockGuard second(lock, 0);
        EXPECT_EQ(EBUSY, pthread_rwlock_trywrlock(lock));
    }
    {
        RwLockGuard writer(lock, 1);
        RwLockGuard(lock, 1).Release(); // refused as a deadlock: must not unlock the first
        EXPECT_EQ(EBUSY, pthread_rwlock_tryrdlock(lock));
    }
    EXPECT_EQ(0, pthread_rwlock_trywrlock(lock));
    pthread_rwlock_unlock(lock);
    EXPECT_EQ(0, RwLockDestroy(lock));
}

TEST(Event, KeepsASignalForOneWait) {
    Event event;
    EventSignal(&event);
    EXPECT_EQ(0, EventWait(&event, 0));
    AwaitFirstHalf();
    EXPECT_EQ(ETIMEDOUT, EventWait(&event, 50)) << "the signal was not taken back";
    AwaitFirstHalf();
    EXPECT_EQ(EINVAL, EventWait(&event, 1999)) << "the deadline was normalised";
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
    const struct {
        timeval from, to;
        uint32_t ms;
    } cases[] = {{{10, 900000}, {12, 100000}, 1200},
                 {{10, 1999}, {11, 1000}, 1000},
                 {{10, 1000}, {10, 2999}, 1},
                 {{10, 0}, {9, 0}, 0U - 1000},
                 {{0, 0}, {4294968, 0}, 704}};
    for (const auto& c : cases) {
        EXPECT_EQ(c.ms, MsBetween(c.from, c.to)) << c.ms;
    }
    SleepMs(20);
    EXPECT_GE(ClockMs(), 19U);
    ClockStart();
    EXPECT_LT(ClockMs(), 15U);
    EXPECT_NEAR(static_cast<double>(WallClockMs()), static_cast<double>(time(nullptr)) * 1000,
                2000);
}

std::atomic<int> g_alarms;

TEST(Clock, ASignalShortensNoSleep) {
    struct sigaction action = {};
    action.sa_handler = [](int) { ++g_alarms; };
    sigaction(SIGALRM, &action, nullptr);
    const itimerval every = {{0, 7000}, {0, 7000}};
    const itimerval never = {};
    setitimer(ITIMER_REAL, &every, nullptr);
    const int64_t start = MonotonicMs();
    SleepMs(80);
    const int64_t slept = MonotonicMs() - start;
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_GE(slept, 79);
    EXPECT_LT(slept, 1000);
    EXPECT_GT(g_alarms, 2);
}

TEST(Clock, StopwatchText) {
    const struct {
        Stopwatch watch;
        const char* text;
    } cases[] = {
        {{{10, 900000}, {12, 100000}}, "DEBUG::run time duration : 1s+200ms\n"},
        {{{10, 100000}, {12, 100999}}, "DEBUG::run time duration : 2s+0ms\n"},
        {{{10, 0}, {9, 999999}}, "DEBUG::time error.\n"},
    };
    for (const auto& c : cases) {
        g_stStopwatch = c.watch;
        EXPECT_EQ(c.text, Capture(StopwatchPrint).out);
    }
}

} // namespace
