// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Thread.h"

#include <cstdlib>
#include <pthread.h>

#include "CBB/Util/Handle.h"

struct ThreadHandle {
    pthread_attr_t attributes;
    pthread_t id;
};

namespace {

bool StartThread(ThreadHandle* thread, ThreadEntry start, void* arg, size_t stackSize,
                 bool systemScope) {
    pthread_attr_t* attributes = &thread->attributes;
    if (pthread_attr_init(attributes) != 0)
        return false;
    const size_t stack = stackSize != 0 ? stackSize : kDefaultThreadStack;
    const bool started =
        pthread_attr_setdetachstate(attributes, PTHREAD_CREATE_JOINABLE) == 0 &&
        pthread_attr_setstacksize(attributes, stack) == 0 &&
        (!systemScope || pthread_attr_setscope(attributes, PTHREAD_SCOPE_SYSTEM) == 0) &&
        pthread_create(&thread->id, attributes, start, arg) == 0;
    if (!started || systemScope)
        pthread_attr_destroy(attributes);
    return started;
}

int Create(ThreadEntry start, void* arg, ThreadHandle** out, size_t stackSize, bool systemScope) {
    ThreadHandle* thread = AllocHandle<ThreadHandle>();
    if (thread == nullptr)
        return kHandleNoMemory;
    if (!StartThread(thread, start, arg, stackSize, systemScope)) {
        free(thread);
        return kHandleNoThread;
    }
    *out = thread;
    return kHandleOk;
}

} // namespace

int ThreadCreate(ThreadEntry start, void* arg, ThreadHandle** out, size_t stackSize) {
    return Create(start, arg, out, stackSize, false);
}

int ThreadCreateSystemScope(ThreadEntry start, void* arg, ThreadHandle** out, size_t stackSize) {
    return Create(start, arg, out, stackSize, true);
}

int ThreadStop(ThreadHandle* thread) {
    if (thread == nullptr)
        return kHandleNull;
    pthread_cancel(thread->id);
    return pthread_join(thread->id, nullptr);
}

int ThreadStopAndFree(ThreadHandle* thread) {
    const int rc = ThreadStop(thread);
    free(thread);
    return rc;
}

void ThreadExit(void* value) {
    pthread_exit(value);
}
