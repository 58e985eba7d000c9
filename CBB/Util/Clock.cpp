// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Clock.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <sys/select.h>

namespace {

using std::chrono::steady_clock;

constexpr int kUsPerSecond = 1000000;

// In steady_clock's unit; 0 as long as nothing set it. One atomic value, since the first use may
// come from any thread.
std::atomic<int64_t> g_reference{0};

int64_t MonotonicNow() {
    return steady_clock::now().time_since_epoch().count();
}

timeval WallClock() {
    timeval now;
    gettimeofday(&now, nullptr);
    return now;
}

} // namespace

Stopwatch g_stStopwatch;

void ClockStart() {
    g_reference = MonotonicNow();
}

uint32_t ClockMs() {
    const int64_t now = MonotonicNow();
    int64_t reference = 0;
    if (g_reference.compare_exchange_strong(reference, now))
        reference = now;
    const steady_clock::duration passed(now - reference);
    return static_cast<uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(passed).count());
}

uint64_t WallClockMs() {
    const timeval now = WallClock();
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_usec) / 1000;
}

void SleepMs(uint32_t ms) {
    uint32_t last = ClockMs();
    int rc = 0;
    do {
        errno = 0;
        const uint32_t now = ClockMs();
        const uint32_t elapsed = now - last;
        last = now;
        if (ms <= elapsed)
            return;
        ms -= elapsed;
        timeval timeout;
        timeout.tv_sec = static_cast<time_t>(ms / 1000);
        timeout.tv_usec = static_cast<suseconds_t>(ms % 1000 * 1000);
        rc = select(0, nullptr, nullptr, nullptr, &timeout);
    } while (rc != 0 && errno == EINTR);
}

char* TimeText() {
    const time_t now = time(nullptr);
    return ctime(&now);
}

tm* LocalTime(time_t t, tm* local) {
    // localtime_r need not look at the zone again by itself. Looking is a stat(2) of the zone file,
    // dear beside the rest of an answer.
    static std::atomic<time_t> lookedAt{-1};
    const time_t now = time(nullptr);
    if (lookedAt.exchange(now) != now)
        tzset();
    return localtime_r(&t, local);
}

void StopwatchStart() {
    g_stStopwatch.start = WallClock();
}

void StopwatchStop() {
    g_stStopwatch.end = WallClock();
}

void StopwatchPrint() {
    int seconds = static_cast<int>(g_stStopwatch.end.tv_sec - g_stStopwatch.start.tv_sec);
    int us = static_cast<int>(g_stStopwatch.end.tv_usec - g_stStopwatch.start.tv_usec);
    if (seconds < 0) {
        puts("DEBUG::time error.");
        return;
    }
    if (us < 0) {
        us += kUsPerSecond;
        --seconds;
    }
    printf("DEBUG::run time duration : %ds+%dms\n", seconds, us / 1000);
}
