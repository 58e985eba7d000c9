// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/Daemon.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "tests/support/Sandbox.h"

namespace fs = std::filesystem;

namespace {

bool ComesTrue(int seconds, const std::function<bool()>& condition) {
    using std::chrono::steady_clock;
    const auto end = steady_clock::now() + std::chrono::seconds(seconds);
    while (!condition()) {
        if (steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

} // namespace

Daemon::Daemon(const std::string& folder, const std::vector<std::string>& options)
    : m_log(folder + "/log") {
    while (fs::exists(m_log)) // another one's
        m_log += '+';
    const std::string copy = folder + "/webctrl";
    fs::copy_file(WEBCTRL_EXE, copy, fs::copy_options::skip_existing);
    std::vector<char*> arguments{const_cast<char*>(copy.c_str())};
    for (const std::string& each : options)
        arguments.push_back(const_cast<char*>(each.c_str()));
    arguments.push_back(nullptr);
    m_pid = fork();
    if (m_pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int log = open(m_log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0644);
        dup2(log, STDOUT_FILENO);
        dup2(log, STDERR_FILENO);
        execv(copy.c_str(), arguments.data());
        _exit(126);
    }
}

Daemon::~Daemon() {
    if (m_pid > 0) {
        kill(m_pid, SIGTERM);
        waitpid(m_pid, nullptr, 0);
    }
    if (::testing::Test::HasFailure())
        printf("the daemon printed:\n%s\n", Output().c_str());
    // A sanitizer's report goes where the daemon's other lines go.
    EXPECT_EQ(Count(Output(), "Sanitizer") + Count(Output(), "runtime error"), 0) << Output();
}

std::string Daemon::Output() const {
    std::ifstream log(m_log, std::ios::binary);
    return {std::istreambuf_iterator<char>(log), {}};
}

void Daemon::WaitFor(const std::string& text, int count, size_t from) {
    EXPECT_TRUE(ComesTrue(10, [&] { return Count(Output().substr(from), text) >= count; }))
        << "not printed: " << text;
}

int Daemon::Descriptors() const {
    const auto folder = fs::directory_iterator("/proc/" + std::to_string(m_pid) + "/fd");
    return static_cast<int>(std::distance(begin(folder), end(folder)));
}

bool Daemon::SettlesAt(int descriptors) const {
    return ComesTrue(5, [&] { return Descriptors() == descriptors; });
}

int Daemon::Wait() {
    int status = 0;
    waitpid(m_pid, &status, 0);
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int Count(const std::string& text, const std::string& part) {
    int count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

void SystemTest::SetUp() {
    std::string error;
    ASSERT_TRUE(EnterSandbox(&error)) << error;
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

Daemon& SystemTest::Start(const std::vector<std::string>& options) {
    m_daemon.reset();
    m_daemon = std::make_unique<Daemon>(m_folder, options);
    m_daemon->WaitFor("Starting web server on port");
    return *m_daemon;
}
