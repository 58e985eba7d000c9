// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <functional>
#include <string>

struct Captured {
    std::string out;
    std::string err;
    int status = 0; // of CaptureInChild
};

// Runs `body` and returns what reached descriptors 1 and 2 meanwhile, through stdio, write(2) or a
// child that has ended.
Captured Capture(const std::function<void()>& body);

// Runs `body` in a forked child, which ends with what it returns: for what ends its process or
// marks it for good. The status is waitpid(2)'s.
int RunInChild(const std::function<int()>& body);

// Both.
Captured CaptureInChild(const std::function<int()>& body);
