// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/TimeFun.h"

#include "tests/unit/Unit.h"

TEST(TimeFun, DatesAreThoseOfTheCLibrary) {
    Capture([] {
        constexpr time_t week = 604800;
        for (time_t t = 946684800; t < 4133980800; t += week / 7) { // 2000-01-01 to 2100-12-31
            const time_t later = t + week;
            const bool isLast = gmtime(&later)->tm_mon != gmtime(&t)->tm_mon;
            const tm date = *gmtime(&t);
            const int year = date.tm_year + 1900, month = date.tm_mon + 1, day = date.tm_mday;
            ASSERT_EQ((date.tm_wday + 6) % 7, DayOfWeek(year, month, day));
            for (int n = 0; n <= 4 && date.tm_wday == 0; ++n)
                ASSERT_EQ(n == 4 ? isLast : n == (day - 1) / 7,
                          day == NthSundayOfMonth(year, month, n));
        }
    });
    EXPECT_EQ("31 2024-3-31\n", Told([] { return NthSundayOfMonth(2024, 3, 4); }));
    EXPECT_EQ(std::pair(0, 0),
              std::pair(NthSundayOfMonth(2024, 3, -1), NthSundayOfMonth(2024, 3, 5)));
    EXPECT_EQ(std::tuple(28, 29, 31),
              std::tuple(DaysInMonth(1900, 2), DaysInMonth(2000, 2), DaysInMonth(2024, 13)));
}

TEST(TimeFun, LocalTimesThereAndBack) {
    // The zone, a moment, its text, and how much later the record's moment is (summer time).
    const std::tuple<const char*, time_t, const char*, int> cases[] = {
        {"<+08>-8", 1704038399, "2023-12-31 23:59:59", 0},
        {"<+0545>-5:45", 1709145900, "2024-02-29 00:30:00", 0},
        {"EST5EDT,M3.2.0,M11.1.0", 1710053999, "2024-03-10 01:59:59", 0},
        {"EST5EDT,M3.2.0,M11.1.0", 1710054000, "2024-03-10 03:00:00", 3600},
        {"AEST-10AEDT,M10.1.0,M4.1.0/3", 1735649999, "2024-12-31 23:59:59", 3600},
        {"UTC0", 4107542400, "2100-03-01 00:00:00", 0},
    };
    TIME_S human;
    char formatted[kTimeTextSize];
    for (const auto& [zone, t, text, later] : cases) {
        setenv("TZ", zone, 1);
        tzset();
        EXPECT_EQ(nullptr, FormatTimeText(t, formatted));
        EXPECT_STREQ(text, formatted);
        EXPECT_EQ(19, FormatTime(t + 60, formatted));
        EXPECT_STREQ(FormatTimeText(t + 60, nullptr), formatted);
        TimeUnixToHuman(t, &human);
        EXPECT_EQ(t + later, TimeHumanToUnix(human)) << zone << ' ' << text;
        EXPECT_EQ(atoi(text), 2000 + human.usYear);
    }
    setenv("TZ", "<+08>-8", 1);
    for (const time_t now = time(nullptr); now == time(nullptr);)
        usleep(10000); // the zone is looked at once a second
    EXPECT_STREQ("1970-01-01 08:00:00", FormatTimeText(0, nullptr));
    EXPECT_EQ("Invalid UTC time,do not set time before 1970-1-1 00:00:00.",
              Capture([&human] { TimeUnixToHuman(0, &human), TimeUnixToHuman(-1, &human); }).out);
    EXPECT_EQ(0, human.usSecond);
    // The clock moves on by a step whenever it is read.
    const int64_t step = 250999, start = MicrosSince(0);
    const int64_t wrapped = 3000000000 - 0x100000000 + start % 1000000;
    MicroTimer timer = {static_cast<uint32_t>(start / 1000000 - 3000), 0, 0, 0};
    for (const auto& [elapsed, restart] :
         {std::pair{wrapped + step, 0}, {wrapped + 2 * step, 1}, {step, 0}})
        EXPECT_EQ(TimerElapsedUs(&timer, restart), elapsed);
    EXPECT_EQ(MicrosSince(start), 4 * step);
    EXPECT_STREQ("", FormatTimeText(std::numeric_limits<time_t>::max(), nullptr));
    EXPECT_DEATH(TimeUnixToHuman(std::numeric_limits<time_t>::max(), &human), "ret!=__null");
}
