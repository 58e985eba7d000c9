// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Clock.h"

#include <sys/select.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

namespace {

constexpr int64_t kUsPerSecond = 1000000;

// Microseconds since the epoch; 0 as long as nothing set it. One atomic value, since the first use
// may come from any thread.
std::atomic<int64_t> g_reference{0};

timeval Now() {
    timeval now;
    gettimeofday(&now, nullptr);
    return now;
}

int64_t ToUs(const timeval& time) {
    return time.tv_sec * kUsPerSecond + time.tv_usec;
}

timeval Reference() {
    int64_t reference = g_reference;
    if (reference == 0) {
        const int64_t now = ToUs(Now());
        if (g_reference.compare_exchange_strong(reference, now)) {
            reference = now;
        }
    }
    timeval result;
    result.tv_sec = static_cast<time_t>(reference / kUsPerSecond);
    result.tv_usec = static_cast<suseconds_t>(reference % kUsPerSecond);
    return result;
}

} // namespace

Stopwatch g_stStopwatch;

void ClockStart() {
    g_reference = ToUs(Now());
}

uint32_t ClockMs() {
    const timeval reference = Reference();
    return MsBetween(reference, Now());
}

uint32_t MsBetween(const timeval& from, const timeval& to) {
    const int64_t seconds = static_cast<int64_t>(to.tv_sec) - from.tv_sec;
    return static_cast<uint32_t>((to.tv_usec - from.tv_usec) / 1000 + 1000 * seconds);
}

uint64_t WallClockMs() {
    const timeval now = Now();
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
        if (ms <= elapsed) {
            return;
        }
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
    tzset(); // localtime_r need not look at the zone again by itself
    return localtime_r(&t, local);
}

void StopwatchStart() {
    g_stStopwatch.start = Now();
}

void StopwatchStop() {
    g_stStopwatch.end = Now();
}

void StopwatchPrint() {
    int seconds = static_cast<int>(g_stStopwatch.end.tv_sec - g_stStopwatch.start.tv_sec);
    int us = static_cast<int>(g_stStopwatch.end.tv_usec - g_stStopwatch.start.tv_usec);
    if (seconds < 0) {
        puts("DEBUG::time error.");
        return;
    }
    if (us < 0) {
        us += static_cast<int>(kUsPerSecond);
        --seconds;
    }
    printf("DEBUG::run time duration : %ds+%dms\n", seconds, us / 1000);
}
