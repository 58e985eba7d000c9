// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <ctime>
#include <sys/time.h>

// The reference, the milliseconds since then and the sleep go by the monotonic clock: setting the
// recorder's clock moves none of them. All else is the wall clock's.

// Sets the process-wide clock reference to now. Any thread may call it; once at the start is meant.
// Without it, the first ClockMs, SleepMs or SemTimedWait sets the reference itself.
void ClockStart();

// Milliseconds since the clock reference, modulo 2^32.
uint32_t ClockMs();

// Milliseconds since the epoch.
uint64_t WallClockMs();

// Sleeps ms milliseconds; after a signal it sleeps what is left.
void SleepMs(uint32_t ms);

// The present local time as ctime(3) writes it, with its newline, in ctime's static buffer.
char* TimeText();

// Fills *local with the local time and returns it; null when t is beyond every calendar. A change
// of TZ or of the system's zone file is seen in the next second.
tm* LocalTime(time_t t, tm* local);

// One stopwatch for the process, without a lock, by the wall clock.
struct Stopwatch {
    timeval start;
    timeval end;
};
extern Stopwatch g_stStopwatch;

void StopwatchStart();
void StopwatchStop();

// Prints "DEBUG::run time duration : %ds+%dms\n" with the time from start to end, or
// "DEBUG::time error.\n" when the end's second lies before the start's.
void StopwatchPrint();
