// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <sys/time.h>

// Dates and times of day, in the local zone.

// A local time as people write it.
struct TIME_S {
    uint16_t usYear;  // counted from 2000: 24 is 2024
    uint16_t usMonth; // 1 to 12
    uint16_t usDay;   // 1 to 31
    uint16_t usHour;
    uint16_t usMinute;
    uint16_t usSecond;
};

// Bytes that a formatted time may take, its NUL included.
constexpr size_t kTimeTextSize = 32;

// Seconds since the epoch. The time is always taken as standard time: while summer time is in force
// the result is the moment an hour after the one that TimeUnixToHuman made the record of. A time
// that the C library cannot tell, or before the epoch, prints a message and gives 0.
time_t TimeHumanToUnix(TIME_S human);

// Fills the record. A negative t prints a message and counts as 0; a t beyond every calendar ends
// the process. Years before 2000 wrap (1999 is 65535).
void TimeUnixToHuman(time_t t, TIME_S* human);

// "2024-03-31 02:30:00" into kTimeTextSize bytes at text, returning null; with a null text into a
// static buffer, which is returned.
char* FormatTimeText(time_t t, char* text);

// The same of a time at hand, into kTimeTextSize bytes at text.
void FormatTimeText(const tm& local, char* text);

// The same into kTimeTextSize bytes at text; returns the length.
int FormatTime(time_t t, char* text);

// 28 to 31; 31 also for months out of range.
int DaysInMonth(int year, int month);

// 0 is Monday, 6 Sunday; Gregorian calendar, years from 1.
int DayOfWeek(int year, int month, int day);

// The day of the month's (n + 1)-th Sunday for n 0 to 3, of its last one for n 4; 0 for any other
// n. Prints the date it found.
int NthSundayOfMonth(int year, int month, int n);

// Fills tv with now and returns it.
timeval* NowTimeval(timeval* tv);

// Microseconds since the epoch, less start.
int64_t MicrosSince(int64_t start);

struct MicroTimer {
    uint32_t startSec;
    uint32_t startUsec;
    uint32_t lastSec;
    uint32_t lastUsec;
};

// Stores now as the timer's last time and returns the microseconds since its start, computed in 32
// bits: they turn negative after 35 minutes. With restart the start then becomes now.
int64_t TimerElapsedUs(MicroTimer* timer, bool restart);
