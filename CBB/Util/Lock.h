// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <ctime>
#include <pthread.h>

// Heap handles. Create returns null when memory is exhausted or the initialisation fails; Destroy
// frees the handle and returns 0, or kHandleNull (CBB/Util/Handle.h) for null.
using MutexHandle = pthread_mutex_t*;
MutexHandle MutexCreate();
int MutexDestroy(MutexHandle mutex);

using RwLockHandle = pthread_rwlock_t*;
RwLockHandle RwLockCreate();
int RwLockDestroy(RwLockHandle lock);

// A mutex with default attributes as a member of its owner.
class CMutex {
public:
    CMutex();
    ~CMutex();
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    pthread_mutex_t* Get() { return &m_stMutex; }

private:
    pthread_mutex_t m_stMutex;
};

// A condition variable and the value that is waited for, as a member of its owner. The owner's
// mutex guards both. Times of waits are those of `clock`; other attributes are the default's.
class CCondition {
public:
    explicit CCondition(clockid_t clock = CLOCK_REALTIME);
    ~CCondition();
    CCondition(const CCondition&) = delete;
    CCondition& operator=(const CCondition&) = delete;

    pthread_cond_t* Get() { return &m_stCondition; }

    int32_t m_iValue = 0;

private:
    pthread_cond_t m_stCondition;
};

// Holds a mutex, which must not be null, for the scope's length.
class AutoLock {
public:
    explicit AutoLock(pthread_mutex_t* mutex);
    virtual ~AutoLock();
    AutoLock(const AutoLock&) = delete;
    AutoLock& operator=(const AutoLock&) = delete;

private:
    pthread_mutex_t* m_pMutex;
};

// Holds a mutex until its release or the scope's end; does nothing with a null mutex.
class MutexGuard {
public:
    explicit MutexGuard(pthread_mutex_t* mutex);
    ~MutexGuard();
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

    // Unlocks once; a second call and the destructor then do nothing.
    void Release();

private:
    pthread_mutex_t* m_pMutex;
};

inline void MutexGuardRelease(MutexGuard& guard) {
    guard.Release();
}

// Holds a read/write lock until its release or the scope's end: for writing when write is not zero,
// otherwise for reading. A lock that could not be taken is not held, and never unlocked.
class RwLockGuard {
public:
    RwLockGuard(pthread_rwlock_t* lock, int write);
    ~RwLockGuard();
    RwLockGuard(const RwLockGuard&) = delete;
    RwLockGuard& operator=(const RwLockGuard&) = delete;

    void Release();

private:
    pthread_rwlock_t* m_pLock;
};
