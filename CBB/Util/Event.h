// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>

#include "CBB/Util/Lock.h"

// A flag that one thread raises and another waits for; a wait takes it back.
struct Event {
    CMutex mutex;
    CCondition signalled{CLOCK_MONOTONIC}; // the value is 1 while the event is raised
};

// Raises the flag and wakes one waiter.
void EventSignal(Event* event);

// Returns 0 when the flag is raised, at once or within ms milliseconds (0: without limit), else the
// error number of pthread_cond_timedwait(3). The flag is cleared in every case. The deadline's
// nanoseconds are handed over as they add up, on purpose: when the monotonic clock's microseconds
// and those of ms pass one second together, the wait fails at once with EINVAL.
int EventWait(Event* event, uint32_t ms);
