// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What the command line asks for. The defaults are those of a daemon without options.
struct Options {
    uint16_t port = 0; // ReadOptions makes it 80, or 443 where a certificate is given
    std::string recorderIp = "127.0.0.1";
    uint16_t recorderPort = 6000;
    std::string webRoot; // empty: beside the executable
    std::vector<std::string> allowedHosts;
    bool maskSecrets = false;
    std::string loginFile; // empty: whoever reaches the port may do all
    std::string tlsCert;   // empty: plain HTTP; the key is empty too
    std::string tlsKey;
};

// Reads the command line (getopt_long(3)). Asked for help or version, prints it and ends the
// process with status 0. For a bad option prints one line on standard error and ends it with
// status 2.
Options ReadOptions(int argc, char** argv);
