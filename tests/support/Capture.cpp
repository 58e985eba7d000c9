// SPDX-License-Identifier: GPL-2.0-only
#include "tests/support/Capture.h"

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Sends one descriptor to a memory file for as long as it lives.
class Redirect {
public:
    explicit Redirect(int fd)
        : m_fd(fd), m_saved(dup(fd)), m_file(memfd_create("captured", MFD_CLOEXEC)) {
        if (m_saved < 0 || m_file < 0 || dup2(m_file, m_fd) < 0)
            abort();
    }
    ~Redirect() {
        dup2(m_saved, m_fd);
        close(m_saved);
        close(m_file);
    }
    Redirect(const Redirect&) = delete;
    Redirect& operator=(const Redirect&) = delete;

    std::string Text() const {
        std::string text(static_cast<size_t>(lseek(m_file, 0, SEEK_END)), '\0');
        const ssize_t size = pread(m_file, text.data(), text.size(), 0);
        text.resize(size < 0 ? 0 : static_cast<size_t>(size));
        return text;
    }

private:
    int m_fd;
    int m_saved;
    int m_file;
};

} // namespace

Captured Capture(const std::function<void()>& body) {
    fflush(nullptr);
    const Redirect out(STDOUT_FILENO), err(STDERR_FILENO);
    body();
    fflush(nullptr);
    return {out.Text(), err.Text(), 0};
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
