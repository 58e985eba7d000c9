// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/Daemon.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>

namespace fs = std::filesystem;

namespace {

bool ComesTrue(const std::function<bool()>& condition) {
    for (int i = 0; i < 2000; ++i, usleep(5000))
        if (condition())
            return true;
    return false;
}

} // namespace

Daemon::Daemon(const std::string& folder, const std::string& options)
    : m_log(memfd_create("log", MFD_CLOEXEC)) {
    const std::string copy = folder + "/webctrl";
    fs::copy_file(WEBCTRL_EXE, copy, fs::copy_options::skip_existing);
    m_pid = fork();
    if (m_pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(m_log, STDOUT_FILENO);
        dup2(m_log, STDERR_FILENO);
        closefrom(STDERR_FILENO + 1); // it has as many connections as it has descriptors left
        execl("/bin/sh", "sh", "-c", ("exec " + copy + " " + options).c_str(), nullptr);
        _exit(126);
    }
}

Daemon::~Daemon() {
    if (m_pid > 0) {
        kill(m_pid, SIGTERM);
        waitpid(m_pid, nullptr, 0);
    }
    const std::string output = Output();
    if (::testing::Test::HasFailure())
        printf("the daemon printed last:\n%s\n",
               output.substr(output.size() - std::min<size_t>(output.size(), 2000)).c_str());
    // A sanitizer's report goes where the daemon's other lines go.
    for (const char* sign : {"Sanitizer", "runtime error"})
        EXPECT_EQ(output.find(sign), std::string::npos) << output;
    close(m_log);
}

void Daemon::WaitFor(const std::string& text, size_t from) {
    EXPECT_TRUE(ComesTrue([&] { return Output().find(text, from) != std::string::npos; }))
        << "not printed: " << text;
}

int Daemon::Descriptors() const {
    const auto folder = fs::directory_iterator("/proc/" + std::to_string(m_pid) + "/fd");
    return static_cast<int>(std::distance(begin(folder), end(folder)));
}

bool Daemon::SettlesAt(int descriptors) const {
    return ComesTrue([&] { return Descriptors() == descriptors; });
}

int Daemon::Wait() {
    int status = 0;
    waitpid(m_pid, &status, 0);
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void SystemTest::SetUp() {
    EnterSandbox();
    char folder[] = "/tmp/webctrl-test-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    m_folder = folder;
    fs::create_directory(m_folder + "/web_root");
}

void SystemTest::TearDown() {
    m_daemon.reset();
    fs::remove_all(m_folder);
}

void SystemTest::WriteFile(const std::string& name, const std::string& content) {
    const fs::path path = m_folder + "/web_root/" + name;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

Daemon& SystemTest::Start(const std::string& options) {
    m_daemon.reset();
    m_daemon = std::make_unique<Daemon>(m_folder, options);
    m_daemon->WaitFor("Starting web server on port");
    return *m_daemon;
}
