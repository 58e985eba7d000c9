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
// child process that has ended.
Captured Capture(const std::function<void()>& body);

// Runs `body` in a forked child, for a body that ends its process or changes it for good. The child
// exits with what `body` returns. Returns the status of waitpid(2).
int RunInChild(const std::function<int()>& body);

// Runs `body` as RunInChild does and returns what Capture does, with the status.
Captured CaptureInChild(const std::function<int()>& body);

// What is in an open file, whatever its offset.
std::string TextOf(int file);
