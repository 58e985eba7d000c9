// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Lock.h"

#include "tests/unit/Unit.h"

TEST(Lock, GuardsHoldAndReleaseOnce) {
    CMutex mutex;
    {
        MutexGuard guard(mutex.Get());
        EXPECT_EQ(EBUSY, pthread_mutex_trylock(mutex.Get()));
        MutexGuardRelease(guard);
        EXPECT_EQ(0, pthread_mutex_trylock(mutex.Get()));
    }
    EXPECT_EQ(EBUSY, pthread_mutex_trylock(mutex.Get())) << "a released guard unlocked again";
    pthread_mutex_unlock(mutex.Get());
    MutexGuard(nullptr).Release();
    RwLockHandle lock = RwLockCreate();
    RwLockGuard writer(lock, 1);
    RwLockGuard(lock, 1).Release(); // refused as a deadlock: must not unlock the first
    EXPECT_EQ(EBUSY, pthread_rwlock_tryrdlock(lock));
    writer.Release();
    RwLockGuard reader(lock, 0), second(lock, 0);
    EXPECT_EQ(EBUSY, pthread_rwlock_trywrlock(lock));
    reader.Release();
    second.Release();
    EXPECT_EQ(0, pthread_rwlock_trywrlock(lock));
    EXPECT_EQ(0, pthread_rwlock_unlock(lock) + RwLockDestroy(lock));
}
