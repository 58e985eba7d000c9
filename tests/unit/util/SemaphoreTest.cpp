// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Semaphore.h"

#include <climits>

#include "tests/unit/Unit.h"

TEST(Semaphore, CountsAndReportsByNumber) {
    for (const auto call : {SemGetValue, SemPost, SemWait, SemDestroy})
        EXPECT_EQ(2, call(nullptr));
    SemHandle semaphore = nullptr;
    EXPECT_EQ(4, SemCreate(static_cast<unsigned>(SEM_VALUE_MAX) + 1, &semaphore));
    ASSERT_EQ(0, SemCreate(1, &semaphore));
    EXPECT_EQ(0, SemPost(semaphore) + SemTimedWait(semaphore, 0));
    EXPECT_EQ(1, SemGetValue(semaphore));
    EXPECT_EQ(std::pair(0, 2), std::pair(SemTimedWait(semaphore, 50), SemTimedWait(nullptr, 50)));
    EXPECT_EQ(0, SemDestroy(semaphore));
}
