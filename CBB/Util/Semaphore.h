// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <semaphore.h>

// Counting semaphores behind a heap handle; results are those of CBB/Util/Handle.h: 0, 2 for a null
// handle, 3 out of memory, 4 when the system's call failed.
using SemHandle = sem_t*;

int SemCreate(unsigned int initial, SemHandle* out);
int SemDestroy(SemHandle semaphore);
int SemPost(SemHandle semaphore);
int SemWait(SemHandle semaphore);

// Waits at most ms milliseconds and returns 4100 when they are over; ms 0 waits without limit.
// It looks every millisecond instead of waiting for a time of day, so that setting the recorder's
// clock changes nothing.
int SemTimedWait(SemHandle semaphore, uint32_t ms);

// The count; 2 for a null handle, which cannot be told from a count of 2.
int SemGetValue(SemHandle semaphore);
