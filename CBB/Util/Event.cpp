// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Event.h"

#include <pthread.h>

namespace {

timespec DeadlineIn(uint32_t ms) {
    timespec deadline;
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += static_cast<time_t>(ms / 1000);
    deadline.tv_nsec += static_cast<long>(ms % 1000) * 1'000'000;
    return deadline;
}

} // namespace

void EventSignal(Event* event) {
    AutoLock lock(event->mutex.Get());
    event->signalled.m_iValue = 1;
    pthread_cond_signal(event->signalled.Get());
}

int EventWait(Event* event, uint32_t ms) {
    AutoLock lock(event->mutex.Get());
    const timespec deadline = DeadlineIn(ms);
    int rc = 0;
    // A condition variable may wake up for no reason; only the flag ends the wait well.
    while (event->signalled.m_iValue == 0 && rc == 0) {
        rc = ms == 0
                 ? pthread_cond_wait(event->signalled.Get(), event->mutex.Get())
                 : pthread_cond_timedwait(event->signalled.Get(), event->mutex.Get(), &deadline);
    }
    event->signalled.m_iValue = 0;
    return rc;
}
