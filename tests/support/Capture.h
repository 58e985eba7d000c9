// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <functional>
#include <string>

struct Captured {
    std::string out;
    std::string err;
    int status = 0; // of CaptureInChild: as waitpid(2) tells it
};

// Runs `body` and returns what reached descriptors 1 and 2 meanwhile, through stdio, write(2) or a
// child that has ended.
Captured Capture(const std::function<void()>& body);

// The same in a forked child, which ends with what `body` returns: for what ends its process or
// marks it for good.
Captured CaptureInChild(const std::function<int()>& body);
