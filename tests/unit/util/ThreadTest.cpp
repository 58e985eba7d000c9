// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Thread.h"

#include "CBB/Util/Event.h"
#include "tests/unit/Unit.h"

static size_t g_stack;

static void* MeasureAndWait(void* measured) {
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
    EXPECT_EQ(1, ThreadCreate(MeasureAndWait, &measured, &thread, 1));
    for (const size_t asked : {0, 0x200000}) {
        const auto create = asked != 0 ? ThreadCreateSystemScope : ThreadCreate;
        ASSERT_EQ(0, create(MeasureAndWait, &measured, &thread, asked));
        EXPECT_EQ(0, EventWait(&measured, 0));
        EXPECT_EQ(0, ThreadStopAndFree(thread));
        EXPECT_EQ(asked != 0 ? asked : kDefaultThreadStack, g_stack);
    }
}
