// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>

// Joinable POSIX threads behind a heap handle; results are those of CBB/Util/Handle.h.
struct ThreadHandle;
using ThreadEntry = void* (*)(void*);

// The stack of a thread for which 0 was asked.
#ifdef WEBCTRL_SANITIZED
constexpr size_t kDefaultThreadStack = 0x100000; // instrumented frames are several times larger
#else
constexpr size_t kDefaultThreadStack = 0x20000; // 128 KiB
#endif

// Starts a thread with a stack of stackSize bytes. Returns 0 and the handle through out, 3 when
// memory is exhausted, 1 for any other failure (a stack size below the system's minimum, too);
// out is written on success only. The handle lives until ThreadStopAndFree.
int ThreadCreate(ThreadEntry start, void* arg, ThreadHandle** out, size_t stackSize);

// The same in system contention scope, see pthread_attr_setscope(3).
int ThreadCreateSystemScope(ThreadEntry start, void* arg, ThreadHandle** out, size_t stackSize);

// Cancels the thread and joins it: returns when it has ended, at its next cancellation point at the
// latest. Returns the result of pthread_join(3), 2 for a null handle.
int ThreadStop(ThreadHandle* thread);

// ThreadStop, and frees the handle.
int ThreadStopAndFree(ThreadHandle* thread);

// Ends the calling thread.
[[noreturn]] void ThreadExit(void* value);
