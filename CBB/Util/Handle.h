// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdlib>

// Results of the functions that work on heap-allocated handles (semaphore, thread, lock).
enum HandleResult : int {
    kHandleOk = 0,
    kHandleNoThread = 1,   // the thread could not be created
    kHandleNull = 2,       // a null handle was given
    kHandleNoMemory = 3,   // out of memory
    kHandleCallFailed = 4, // the pthread or semaphore call failed
    kHandleTimedOut = 4100 // a timed wait expired
};

// The storage of every handle: one zero-filled T, or null when memory is exhausted.
// It is given back with std::free.
template <typename T>
T* AllocHandle() {
    return static_cast<T*>(std::calloc(1, sizeof(T)));
}
