// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The command line. Without options the daemon behaves as it always did.
struct Options {
    uint16_t port = 80;
    std::string recorderIp = "127.0.0.1";
    uint16_t recorderPort = 6000;
    std::string webRoot; ///< empty: beside the executable
    std::vector<std::string> allowedHosts;
};

/// Reads the command line (getopt_long(3)). Prints the help or the version on standard output and
/// ends with status 0 when asked to; prints one line on standard error and ends with status 2 for
/// anything that it cannot take.
Options ReadOptions(int argc, char** argv);
