// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/Capture.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Runs `body` while `fd` goes to a memory file; gives what is in it then.
std::string Redirect(int fd, const std::function<void()>& body) {
    const int saved = dup(fd), file = memfd_create("captured", MFD_CLOEXEC);
    if (saved < 0 || file < 0 || dup2(file, fd) < 0)
        abort();
    body();
    fflush(nullptr);
    dup2(saved, fd);
    close(saved);
    std::string text = TextOf(file);
    close(file);
    return text;
}

} // namespace

std::string TextOf(int file) {
    std::ifstream text("/proc/self/fd/" + std::to_string(file), std::ios::binary);
    return {std::istreambuf_iterator<char>(text), {}};
}

Captured Capture(const std::function<void()>& body) {
    Captured captured;
    fflush(nullptr);
    captured.out = Redirect(STDOUT_FILENO, [&] { captured.err = Redirect(STDERR_FILENO, body); });
    return captured;
}

int RunInChild(const std::function<int()>& body) {
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const int result = body();
        fflush(nullptr);
        _exit(result);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

Captured CaptureInChild(const std::function<int()>& body) {
    int status = -1;
    Captured captured = Capture([&] { status = RunInChild(body); });
    captured.status = status;
    return captured;
}
