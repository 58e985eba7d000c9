// SPDX-License-Identifier: GPL-2.0-only
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <string>
#include <unistd.h>

#include "CBB/Util/Console.h"
#include "CBB/Util/Printable.h"
#include "CBB/WebCtrl/Http/HostGuard.h"
#include "CBB/WebCtrl/Http/LoginGuard.h"
#include "CBB/WebCtrl/Http/Tls.h"
#include "CBB/WebCtrl/Options.h"
#include "CBB/WebCtrl/PrintLine.h"
#include "CBB/WebCtrl/WebCtrl.h"

namespace {

// Bytes that the executable's path may have, and that the web root's is cut to.
constexpr size_t kPathBytes = 127;

// The web root beside the executable. Ends the process when the executable's path is too long.
std::string FindWebRoot() {
    char path[256] = {};
    const ssize_t length = readlink("/proc/self/exe", path, kPathBytes + 1);
    if (static_cast<size_t>(length) > kPathBytes) {
        PrintLine("***Error***\n");
        exit(-1);
    }
    if (char* slash = strrchr(path, '/'))
        slash[1] = '\0';
    return (std::string(path) + "web_root").substr(0, kPathBytes);
}

// Reads the files that the options name. Ends the process when one cannot be used.
void LoadFiles(const Options& options) {
    std::string fault;
    if (!options.loginFile.empty())
        fault = StartLogin(options.loginFile);
    if (fault.empty() && !options.tlsCert.empty())
        fault = LoadTls(options.tlsCert, options.tlsKey);
    if (fault.empty())
        return;
    fprintf(stderr, "webctrl: %s\n", fault.c_str());
    exit(2);
}

// Reads the login file again on each SIGHUP. Calls `start` with the signal blocked, so that no
// thread's wait is interrupted by it.
template <typename Function>
[[noreturn]] void ReloadOnHangup(Function start) {
    sigset_t hangup;
    sigemptyset(&hangup);
    sigaddset(&hangup, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &hangup, nullptr);
    start();
    for (int number;;)
        if (sigwait(&hangup, &number) == 0)
            ReloadLogin();
}

} // namespace

int main(int argc, char** argv) {
    OpenConsole();
    setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
#ifdef __GLIBC__
    // Nearly all the work is one thread's, so one arena is enough. Only the main arena returns all
    // of its free memory to the system.
    mallopt(M_ARENA_MAX, 1);
#endif
    const Options options = ReadOptions(argc, argv);
    LoadFiles(options);
    MaskSecrets(options.maskSecrets);

    CWebCtrl* controller = CWebCtrl::GetInstance();
    controller->SetWebPort(options.port);
    for (const std::string& name : options.allowedHosts)
        AllowHost(name);
    controller->Init(options.recorderIp.c_str(), options.recorderPort);

    const std::string webRoot = options.webRoot.empty() ? FindWebRoot() : options.webRoot;
    PrintLine("web server current absolute path:", webRoot, "\n");
    const auto start = [&] { controller->Start(webRoot.c_str()); };
    if (!options.loginFile.empty())
        ReloadOnHangup(start);
    start();
    for (;;)
        sleep(2);
}
