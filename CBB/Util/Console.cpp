// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Console.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Gathered {
    char text[PIPE_BUF];
    size_t size;
    int batches;
};
thread_local Gathered t_gathered;

struct Outlet {
    int fd;
    bool mayWait = true; // unless found otherwise, before anything is printed
    std::atomic<long> lostLines{0};
    std::atomic<bool> cut{false}; // what was written last is no whole line
};
Outlet g_output{STDOUT_FILENO};
Outlet g_error{STDERR_FILENO};

bool IsReady(int fd) {
    pollfd waited{fd, POLLOUT, 0};
    return poll(&waited, 1, 0) == 1 && (waited.revents & POLLOUT) != 0;
}

// How much of at most PIPE_BUF bytes could be written. A pipe that is ready takes that many even
// where it could not be made non-blocking.
size_t WriteAtOnce(const Outlet& outlet, std::string_view text) {
    if (outlet.mayWait && !IsReady(outlet.fd))
        return 0;
    ssize_t written;
    do
        written = write(outlet.fd, text.data(), text.size());
    while (written < 0 && errno == EINTR);
    return static_cast<size_t>(std::max<ssize_t>(written, 0));
}

void WriteOrDrop(Outlet& outlet, std::string_view text) {
    if (const long lost = outlet.lostLines.exchange(0); lost > 0) {
        const std::string notice = (outlet.cut ? "\n" : "") + std::string("webctrl: ") +
                                   std::to_string(lost) + " lines could not be printed\n";
        // A pipe's last page may have room for the notice alone.
        if (!IsReady(outlet.fd) || WriteAtOnce(outlet, notice) < notice.size()) {
            outlet.lostLines += lost + std::count(text.begin(), text.end(), '\n');
            return;
        }
    }
    const size_t written = WriteAtOnce(outlet, text);
    if (written > 0)
        outlet.cut = text[written - 1] != '\n';
    text.remove_prefix(written);
    if (!text.empty())
        outlet.lostLines += std::max<long>(std::count(text.begin(), text.end(), '\n'), 1);
}

// Another description of the same pipe or terminal: O_NONBLOCK would change the writing of every
// process that shares this one.
void MakeOwn(Outlet& outlet) {
    struct stat status;
    if (fstat(outlet.fd, &status) != 0)
        return;
    if (!S_ISFIFO(status.st_mode) && isatty(outlet.fd) == 0) {
        outlet.mayWait = S_ISSOCK(status.st_mode);
        return;
    }
    const std::string path = "/proc/self/fd/" + std::to_string(outlet.fd);
    const int own = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (own < 0)
        return; // of another user, or no /proc
    dup2(own, outlet.fd);
    close(own);
    outlet.mayWait = false;
}

} // namespace

void OpenConsole() {
    signal(SIGPIPE, SIG_IGN);
    int fd;
    do
        fd = open("/dev/null", O_RDWR);
    while (fd >= 0 && fd <= STDERR_FILENO);
    close(fd);
    MakeOwn(g_output);
    MakeOwn(g_error);
}

ConsoleBatch::ConsoleBatch() {
    ++t_gathered.batches;
}

ConsoleBatch::~ConsoleBatch() {
    if (--t_gathered.batches == 0)
        ConsoleFlush();
}

void ConsoleAdd(std::string_view text) {
    Gathered& gathered = t_gathered;
    while (text.size() > sizeof(gathered.text) - gathered.size) {
        const size_t room = sizeof(gathered.text) - gathered.size;
        memcpy(gathered.text + gathered.size, text.data(), room);
        gathered.size += room;
        text.remove_prefix(room);
        ConsoleFlush();
    }
    text.copy(gathered.text + gathered.size,
              text.size()); // nothing for an empty one, unlike memcpy
    gathered.size += text.size();
}

void ConsoleFlush() {
    if (t_gathered.size > 0)
        WriteOrDrop(g_output, {t_gathered.text, t_gathered.size});
    t_gathered.size = 0;
}

void ConsoleWrite(std::string_view text) {
    const ConsoleBatch batch;
    ConsoleAdd(text);
}

void ConsoleWriteError(std::string_view text) {
    WriteOrDrop(g_error, text);
}

bool ConsoleIsReady() {
    return IsReady(STDOUT_FILENO) && IsReady(STDERR_FILENO);
}
