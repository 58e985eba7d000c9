// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// The recorder behind a control link without a network and without waiting.

#include <functional>
#include <string>
#include <string_view>

#include "CBB/WebCtrl/Link/ControlLink.h"
#include "CBB/WebCtrl/WebCtrl.h"

inline void Require(bool holds) {
    if (!holds)
        __builtin_trap();
}

// What the recorder replies to a datagram, cut to 1024 bytes; nothing comes where it is empty.
// Every datagram is required to be shown in docs/recorder-protocol.md: a query as it stands there,
// a write but for its values.
extern std::function<std::string(const std::string& datagram)> g_recorder;

// The controller of that recorder, without the pause and the second web thread of a restart.
struct QuietController : CWebCtrl {
    int Restart(long, long) override { return 0; }
    std::unique_ptr<ControlLink> OpenLink() override;
};

// Sends one request through the routes. Returns the bytes of its answer.
std::string Ask(CWebCtrl& controller, std::string_view path, std::string_view body);
