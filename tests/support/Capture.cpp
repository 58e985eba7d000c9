// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/Capture.h"

#include <cstdio>
#include <cstdlib>
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
    std::string text(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
    const ssize_t size = pread(file, text.data(), text.size(), 0);
    text.resize(size < 0 ? 0 : static_cast<size_t>(size));
    close(file);
    return text;
}

} // namespace

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
