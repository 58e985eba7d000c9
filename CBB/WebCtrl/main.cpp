// SPDX-License-Identifier: GPL-2.0-only
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <string>
#include <unistd.h>

#include "CBB/WebCtrl/Http/HostGuard.h"
#include "CBB/WebCtrl/Options.h"
#include "CBB/WebCtrl/WebCtrl.h"

namespace {

// What the path of the executable, and of the web root, may have.
constexpr size_t kPathBytes = 127;

// The web root beside the executable; ends the process where that cannot be told.
std::string FindWebRoot() {
    char path[256] = {};
    const ssize_t length = readlink("/proc/self/exe", path, kPathBytes + 1);
    if (static_cast<size_t>(length) > kPathBytes) {
        puts("***Error***");
        exit(-1);
    }
    if (char* slash = strrchr(path, '/'))
        slash[1] = '\0';
    return (std::string(path) + "web_root").substr(0, kPathBytes);
}

} // namespace

int main(int argc, char** argv) {
    setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
#ifdef __GLIBC__
    // One thread does all the work, and only this arena gives back all that is free.
    mallopt(M_ARENA_MAX, 1);
#endif
    const Options options = ReadOptions(argc, argv);

    CWebCtrl* controller = CWebCtrl::GetInstance();
    controller->SetWebPort(options.port);
    for (const std::string& name : options.allowedHosts)
        AllowHost(name);
    controller->Init(options.recorderIp.c_str(), options.recorderPort);

    const std::string webRoot = options.webRoot.empty() ? FindWebRoot() : options.webRoot;
    printf("web server current absolute path:%s\n", webRoot.c_str());
    controller->Start(webRoot.c_str());
    for (;;)
        sleep(2);
}
