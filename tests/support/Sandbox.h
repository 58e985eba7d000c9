// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// A private network and file system view for tests that change the machine: namespaces(7).

#include <string>

// Moves the calling process, still single-threaded, into a network and a mount namespace of its
// own:
//   here   lo up;  eth0  = 192.168.50.2/24, broadcast 192.168.50.255
//   peer   lo up;  peer0 = 192.168.50.1/24, the other end of that cable
// Both ends are up and running on return. Everything vanishes with the process. An ordinary user
// becomes root of a user namespace first. Ends the process where the kernel or its policy allows
// neither.
void EnterSandbox();

// Runs a shell command; fails the current test unless it succeeds.
void Shell(const std::string& command);

// Puts a private, writable file with `content` at `path`, where there may be a file, nothing, or a
// link, dangling or not. The folder has to exist; without a file there it becomes private too.
void ReplaceFile(const char* path, const std::string& content);

// Makes the folder at `path` private: changes to the entries below it stay in the sandbox.
void ReplaceFolder(const std::string& path);
