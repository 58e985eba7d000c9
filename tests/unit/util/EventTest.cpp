// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Event.h"

#include "CBB/Util/Clock.h"
#include "tests/unit/Unit.h"

TEST(Event, KeepsASignalForOneWait) {
    Event event;
    int result = ETIMEDOUT;
    for (int tries = 0; tries < 5 && result == ETIMEDOUT; ++tries)
        result = EventWait(&event, 1999); // but for one millisecond the next second is passed
    EXPECT_EQ(EINVAL, result) << "the deadline was normalised, or a signal there at the start";
    EventSignal(&event);
    EXPECT_EQ(0, EventWait(&event, 0));
    for (const uint32_t ms : {50, 1000}) {
        uint32_t start;
        do { // a time at which that passes none
            start = ClockMs();
            result = EventWait(&event, ms);
        } while (result == EINVAL);
        EXPECT_EQ(ETIMEDOUT, result) << "the signal was not taken back";
        EXPECT_GE(ClockMs() - start, ms - 1);
    }
}
