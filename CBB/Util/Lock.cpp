// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Lock.h"

#include <cstdlib>

#include "CBB/Util/Handle.h"

namespace {

template <typename T, typename Attributes>
T* CreateLock(int (*init)(T*, const Attributes*)) {
    T* lock = AllocHandle<T>();
    if (lock != nullptr && init(lock, nullptr) != 0) {
        free(lock);
        lock = nullptr;
    }
    return lock;
}

template <typename T>
int DestroyLock(T* lock, int (*destroy)(T*)) {
    if (lock == nullptr)
        return kHandleNull;
    destroy(lock);
    free(lock);
    return kHandleOk;
}

} // namespace

MutexHandle MutexCreate() {
    return CreateLock(pthread_mutex_init);
}

int MutexDestroy(MutexHandle mutex) {
    return DestroyLock(mutex, pthread_mutex_destroy);
}

RwLockHandle RwLockCreate() {
    return CreateLock(pthread_rwlock_init);
}

int RwLockDestroy(RwLockHandle lock) {
    return DestroyLock(lock, pthread_rwlock_destroy);
}

CMutex::CMutex() {
    pthread_mutex_init(&m_stMutex, nullptr);
}

CMutex::~CMutex() {
    pthread_mutex_destroy(&m_stMutex);
}

CCondition::CCondition(clockid_t clock) {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, clock);
    pthread_cond_init(&m_stCondition, &attributes);
    pthread_condattr_destroy(&attributes);
}

CCondition::~CCondition() {
    pthread_cond_destroy(&m_stCondition);
}

AutoLock::AutoLock(pthread_mutex_t* mutex) : m_pMutex(mutex) {
    pthread_mutex_lock(m_pMutex);
}

AutoLock::~AutoLock() {
    pthread_mutex_unlock(m_pMutex);
}

MutexGuard::MutexGuard(pthread_mutex_t* mutex) : m_pMutex(mutex) {
    if (m_pMutex != nullptr)
        pthread_mutex_lock(m_pMutex);
}

MutexGuard::~MutexGuard() {
    Release();
}

void MutexGuard::Release() {
    if (m_pMutex != nullptr) {
        pthread_mutex_unlock(m_pMutex);
        m_pMutex = nullptr;
    }
}

RwLockGuard::RwLockGuard(pthread_rwlock_t* lock, int write) : m_pLock(nullptr) {
    if (lock == nullptr)
        return;
    const int rc = write != 0 ? pthread_rwlock_wrlock(lock) : pthread_rwlock_rdlock(lock);
    if (rc == 0)
        m_pLock = lock;
}

RwLockGuard::~RwLockGuard() {
    Release();
}

void RwLockGuard::Release() {
    if (m_pLock != nullptr) {
        pthread_rwlock_unlock(m_pLock);
        m_pLock = nullptr;
    }
}
