// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Recorder.h"

struct Options {
    std::string listenIp = "127.0.0.1";
    uint16_t listenPort = 6000; // 0: any free one
    std::string stateFile;      // empty: the state lives in memory only
    std::vector<std::string> overrides;
    Faults faults;
    int delayMs = 0;
    bool wrongPort = false;
    bool verbose = false;
    bool help = false;
};

// Reads "--name VALUE" and "--name=VALUE". False, with one line for people in `error`, when an
// option is unknown, lacks its value or has one that makes no sense.
bool ParseOptions(const std::vector<std::string>& arguments, Options& options, std::string& error);

std::string HelpText();
