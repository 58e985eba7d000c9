// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/TimeFun.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "CBB/Util/Clock.h"

namespace {

constexpr int kRecordYear = 2000;
constexpr int kTmYear = 1900;
constexpr int kSunday = 6;
constexpr int kLastSunday = 4;

} // namespace

time_t TimeHumanToUnix(TIME_S human) {
    tm local = {};
    local.tm_year = human.usYear + kRecordYear - kTmYear;
    local.tm_mon = human.usMonth - 1;
    local.tm_mday = human.usDay;
    local.tm_hour = human.usHour;
    local.tm_min = human.usMinute;
    local.tm_sec = human.usSecond;
    const time_t t = mktime(&local);
    if (t < 0) {
        printf("Invalid human time,do not set time before 1970-1-1 8:00:00.");
        return 0;
    }
    return t;
}

void TimeUnixToHuman(time_t t, TIME_S* human) {
    if (t < 0) {
        printf("Invalid UTC time,do not set time before 1970-1-1 00:00:00.");
        t = 0;
    }
    tm local;
    if (LocalTime(t, &local) == nullptr) {
        // Fatal in every build, so not assert(3), which a release build leaves out.
        fprintf(stderr, "%s: Assertion `ret!=__null' failed.\n", __func__);
        abort();
    }
    human->usYear = static_cast<uint16_t>(local.tm_year + kTmYear - kRecordYear);
    human->usMonth = static_cast<uint16_t>(local.tm_mon + 1);
    human->usDay = static_cast<uint16_t>(local.tm_mday);
    human->usHour = static_cast<uint16_t>(local.tm_hour);
    human->usMinute = static_cast<uint16_t>(local.tm_min);
    human->usSecond = static_cast<uint16_t>(local.tm_sec);
}

char* FormatTimeText(time_t t, char* text) {
    static char buffer[kTimeTextSize];
    char* out = text != nullptr ? text : buffer;
    tm local;
    if (LocalTime(t, &local) != nullptr)
        FormatTimeText(local, out);
    else
        *out = '\0';
    return text != nullptr ? nullptr : buffer;
}

void FormatTimeText(const tm& local, char* text) {
    // By hand, since every read of the clock comes here: strftime(3) takes five times as long.
    const struct {
        char before;
        int value;
    } numbers[] = {{'-', local.tm_mon + 1},
                   {'-', local.tm_mday},
                   {' ', local.tm_hour},
                   {':', local.tm_min},
                   {':', local.tm_sec}};
    char* at = std::to_chars(text, text + kTimeTextSize / 2, int64_t{local.tm_year} + kTmYear).ptr;
    for (const auto& number : numbers) {
        *at++ = number.before;
        *at++ = static_cast<char>('0' + number.value / 10);
        *at++ = static_cast<char>('0' + number.value % 10);
    }
    *at = '\0';
}

int FormatTime(time_t t, char* text) {
    FormatTimeText(t, text);
    return static_cast<int>(strlen(text));
}

int DaysInMonth(int year, int month) {
    switch (month) {
    case 2:
        return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
    case 4:
    case 6:
    case 9:
    case 11:
        return 30;
    default:
        return 31;
    }
}

// January and February count as the months 13 and 14 of the year before, so that a leap day is a
// year's last.
int DayOfWeek(int year, int month, int day) {
    const bool early = month == 1 || month == 2;
    const int m = early ? month + 12 : month;
    const int y = early ? year - 1 : year;
    return (day + 2 * m + 3 * (m + 1) / 5 + y + y / 4 - y / 100 + y / 400) % 7;
}

int NthSundayOfMonth(int year, int month, int n) {
    if (n < 0 || n > kLastSunday)
        return 0;
    int day = 0;
    if (n == kLastSunday) {
        const int last = DaysInMonth(year, month);
        day = last - (DayOfWeek(year, month, last) + 1) % 7;
    } else {
        day = 1 + kSunday - DayOfWeek(year, month, 1) + 7 * n;
    }
    printf("%d-%d-%d\n", year, month, day);
    return day;
}

timeval* NowTimeval(timeval* tv) {
    gettimeofday(tv, nullptr);
    return tv;
}

int64_t MicrosSince(int64_t start) {
    timeval now;
    NowTimeval(&now);
    return static_cast<int64_t>(now.tv_sec) * 1000000 + now.tv_usec - start;
}

int64_t TimerElapsedUs(MicroTimer* timer, bool restart) {
    timeval now;
    NowTimeval(&now);
    timer->lastSec = static_cast<uint32_t>(now.tv_sec);
    timer->lastUsec = static_cast<uint32_t>(now.tv_usec);
    const uint32_t us =
        timer->lastUsec + 1000000U * (timer->lastSec - timer->startSec) - timer->startUsec;
    if (restart) {
        timer->startSec = timer->lastSec;
        timer->startUsec = timer->lastUsec;
    }
    return static_cast<int32_t>(us);
}
