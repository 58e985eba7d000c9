// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Semaphore.h"

#include <algorithm>
#include <cstdlib>

#include "CBB/Util/Clock.h"
#include "CBB/Util/Handle.h"

int SemCreate(unsigned int initial, SemHandle* out) {
    SemHandle semaphore = AllocHandle<sem_t>();
    if (semaphore == nullptr)
        return kHandleNoMemory;
    if (sem_init(semaphore, 0, initial) != 0) {
        free(semaphore);
        return kHandleCallFailed;
    }
    *out = semaphore;
    return kHandleOk;
}

int SemDestroy(SemHandle semaphore) {
    if (semaphore == nullptr)
        return kHandleNull;
    sem_destroy(semaphore);
    free(semaphore);
    return kHandleOk;
}

int SemPost(SemHandle semaphore) {
    if (semaphore == nullptr)
        return kHandleNull;
    return sem_post(semaphore) == 0 ? kHandleOk : kHandleCallFailed;
}

int SemWait(SemHandle semaphore) {
    if (semaphore == nullptr)
        return kHandleNull;
    return sem_wait(semaphore) == 0 ? kHandleOk : kHandleCallFailed;
}

int SemTimedWait(SemHandle semaphore, uint32_t ms) {
    if (semaphore == nullptr || ms == 0)
        return SemWait(semaphore);
    const uint32_t start = ClockMs();
    do {
        if (sem_trywait(semaphore) == 0)
            return kHandleOk;
        SleepMs(1);
    } while (ClockMs() - start < ms);
    return kHandleTimedOut;
}

int SemGetValue(SemHandle semaphore) {
    if (semaphore == nullptr)
        return kHandleNull;
    int value = 0;
    sem_getvalue(semaphore, &value);
    return std::max(value, 0);
}
