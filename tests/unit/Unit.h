// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// What every unit test has at hand.

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "tests/support/Capture.h"
#include "tests/support/Sandbox.h"

inline std::string Repeat(int count, const std::string& part) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += part;
    return text;
}

// "RESULT OUTPUT" of a call, and behind a bar what went to standard error, if anything.
inline std::string Told(const std::function<int()>& call) {
    int result = 0;
    const Captured told = Capture([&] { result = call(); });
    return std::to_string(result) + " " + told.out + (told.err.empty() ? "" : "|") + told.err;
}

// Takes all of the process's capabilities(7), also those of a sandbox's root.
inline int DropRights() {
    __user_cap_header_struct head{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2]{};
    return static_cast<int>(syscall(SYS_capset, &head, none));
}

// For cases that change the machine. A file's suite is this under its own name.
struct InSandbox : testing::Test {
    void SetUp() override { EnterSandbox(); }
};
