// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Recorder.h"

struct Options {
    std::string listenIp = "127.0.0.1";
    uint16_t listenPort = 6000; // 0: any free one
    int count = 1;              // recorders to play
    bool addresses = false; // they listen on consecutive addresses, otherwise on consecutive ports
    std::string stateFile;  // empty: the state lives in memory only
    std::vector<std::string> overrides;
    Faults faults;
    int delayMs = 0;
    bool wrongPort = false;
    bool verbose = false;
    bool help = false;
};

// Reads "--name VALUE" and "--name=VALUE". When an option is unknown, or its value is missing or
// bad, returns false with a sentence in `error`.
bool ParseOptions(const std::vector<std::string>& arguments, Options& options, std::string& error);

// The options of one recorder; `number` counts from 0. It has an endpoint of its own, and "{n}" in
// the state file's name and in the overrides becomes its number counted from 1.
Options OptionsOf(const Options& options, int number);

std::string HelpText();
