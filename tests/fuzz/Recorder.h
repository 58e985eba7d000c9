// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// The recorder as the double of the control socket (Recorder.cpp) plays it: no network, no waiting.

#include "CBB/WebCtrl/WebCtrl.h"

#include <functional>
#include <string>
#include <string_view>

inline void Require(bool holds) {
    if (!holds)
        __builtin_trap();
}

// What the recorder replies to a datagram, cut to 1024 bytes; nothing comes where it is empty.
// Every datagram is required to be a query's fixed text, or a write in well-formed XML that has
// exactly the elements and attributes of its section, whatever its values are.
extern std::function<std::string(const std::string& datagram)> g_recorder;

// The controller without the pause and the second web thread of a restart.
struct QuietController : CWebCtrl {
    int Restart(long, long) override { return 0; }
};

// Sends one request through the routes. Returns the bytes of its answer.
std::string Ask(CWebCtrl& controller, const std::string& path, std::string_view body);
