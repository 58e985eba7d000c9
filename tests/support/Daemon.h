// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// The real daemon, in a private network, from a folder of its own; and what goes with it.

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>

#include "tests/support/Capture.h"
#include "tests/support/HttpClient.h"
#include "tests/support/Recorder.h"
#include "tests/support/Sandbox.h"

class Daemon {
public:
    // Copies the executable to `folder` and starts it there, by a shell.
    explicit Daemon(const std::string& folder, const std::string& options = "");
    ~Daemon(); // ends it
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    // Waits until its output, standard output and error together, has `text` from byte `from` on;
    // fails the test after 10 s.
    void WaitFor(const std::string& text, size_t from = 0);
    std::string Output() const { return TextOf(m_log); }
    int Descriptors() const;
    // Whether it comes to have that many descriptors within 10 s: closing takes the server a
    // moment.
    bool SettlesAt(int descriptors) const;
    // Waits for its end: the exit status, or -1 after a signal.
    int Wait();
    pid_t Pid() const { return m_pid; }

private:
    int m_log;
    pid_t m_pid = -1;
};

// A private network with a folder that is gone afterwards and, once asked for, a daemon that
// serves `Folder()/web_root` on port 80.
class SystemTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    const std::string& Folder() const { return m_folder; }
    // Writes a file below the web root.
    void WriteFile(const std::string& name, const std::string& content);
    // Starts the daemon and waits until it listens.
    Daemon& Start(const std::string& options = "");
    Daemon& Running() { return *m_daemon; }

private:
    std::string m_folder;
    std::unique_ptr<Daemon> m_daemon;
};
