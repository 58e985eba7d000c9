// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Config/Config_Task.h"

#include "tests/unit/Unit.h"

// Created once each; the leak checker sees their release.
TEST(Config_Task, TablesAndMutexesOnFirstUse) {
    struct Opened : CConfig_Task {
        using CConfig_Task::Mutex;
        using CConfig_Task::Table;
    } task;
    EXPECT_NE(task.Table(0), task.Table(1));
    EXPECT_EQ(task.Table(0), task.Table(0));
    EXPECT_EQ(task.Mutex(3), task.Mutex(3));
    EXPECT_EQ(pthread_mutex_trylock(task.Mutex(3)), 0);
    EXPECT_EQ(pthread_mutex_unlock(task.Mutex(3)), 0);
}
