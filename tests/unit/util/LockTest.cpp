// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Lock.h"

#include "tests/unit/Unit.h"

TEST(Lock, GuardsHoldAndReleaseOnce) {
    CMutex mutex;
    RwLockHandle lock = RwLockCreate();
    MutexGuard(nullptr).Release();
    RwLockGuard(nullptr, 1).Release();
    for (const bool early : {true, false}) {
        {
            MutexGuard guard(mutex.Get());
            RwLockGuard writer(lock, 1);
            RwLockGuard(lock, 1).Release(); // refused as a deadlock: must not unlock the first
            EXPECT_EQ(EBUSY, pthread_mutex_trylock(mutex.Get()));
            EXPECT_EQ(EBUSY, pthread_rwlock_tryrdlock(lock));
            if (early) {
                MutexGuardRelease(guard);
                writer.Release();
                EXPECT_EQ(0, pthread_mutex_trylock(mutex.Get()) + pthread_rwlock_trywrlock(lock));
            }
        }
        const int state = early ? EBUSY : 0; // a guard unlocks once
        EXPECT_EQ(state, pthread_mutex_trylock(mutex.Get()));
        EXPECT_EQ(state, pthread_rwlock_tryrdlock(lock));
        EXPECT_EQ(0, pthread_mutex_unlock(mutex.Get()) + pthread_rwlock_unlock(lock));
    }
    {
        const RwLockGuard reader(lock, 0), second(lock, 0);
        EXPECT_EQ(EBUSY, pthread_rwlock_trywrlock(lock));
    }
    EXPECT_EQ(0, pthread_rwlock_trywrlock(lock));
    EXPECT_EQ(0, pthread_rwlock_unlock(lock) + RwLockDestroy(lock));
    EXPECT_EQ(2, RwLockDestroy(nullptr));
}
