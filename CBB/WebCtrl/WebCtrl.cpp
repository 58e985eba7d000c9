// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/WebCtrl.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <pthread.h>
#include <unistd.h>

#include "CBB/Util/CopyText.h"
#include "CBB/Util/DebugPrint.h"
#include "CBB/Util/Logger.h"
#include "CBB/Util/Thread.h"
#include "CBB/WebCtrl/Http/HttpServer.h"

namespace {

constexpr unsigned kRestartPauseSeconds = 2;
// The line number that the start line of the web thread carries.
constexpr int kDetectSvcLine = 417;

} // namespace

CWebCtrl* CWebCtrl::GetInstance() {
    static CWebCtrl* instance = nullptr;
    if (instance == nullptr) {
        instance = new (std::nothrow) CWebCtrl;
        if (instance == nullptr)
            errno = ENOMEM;
    }
    return instance;
}

CWebCtrl::CWebCtrl() = default;

CWebCtrl::~CWebCtrl() {
    CWebCtrl::Stop();
}

int CWebCtrl::Init(const char* ip, int port) {
    printf("CWebCtrl::Init, ip:%s, port:%d.\n", ip, port);
    CopyText(m_szInitIp, ip);
    return SetCtrlAddr(ip, port);
}

int CWebCtrl::SetCtrlAddr(const char* ip, int port) {
    CopyText(m_szDstIp, ip);
    m_usDstPort = static_cast<uint16_t>(port);
    return 0;
}

int CWebCtrl::Start(const char* webRoot) {
    if (m_bStarted != 0) {
        puts("CWebCtrl::Start, is already started.");
        return 0;
    }
    // Whether it worked shows in the first exchange; loopback is up on most systems anyway.
    [[maybe_unused]] const int status = system("/sbin/ifconfig lo 127.0.0.1");
    m_bStarted = 1;
    if (webRoot != m_szWebRoot) // as which Restart gives it back
        CopyText(m_szWebRoot, webRoot);
    ThreadHandle* thread = nullptr;
    const int error = ThreadCreate(WebSvcThreadEntry, this, &thread, 0);
    if (error != 0) {
        printf("CWebCtrl Start err, create rt svc pthread failed [%ld].\n",
               static_cast<long>(error));
        m_bStarted = 0;
        return -1;
    }
    m_hThread = thread;
    return 0;
}

int CWebCtrl::Stop(long, long) {
    m_bStarted = 0;
    // On the web thread the join of itself fails at once and the thread runs on.
    if (ThreadHandle* thread = m_hThread.exchange(nullptr))
        ThreadStopAndFree(thread);
    return 0;
}

int CWebCtrl::Restart(long a, long b) {
    Stop(a, b);
    CopyText(m_szDstIp, m_szInitIp);
    sleep(kRestartPauseSeconds);
    Start(m_szWebRoot);
    return 0;
}

void* CWebCtrl::WebSvcThreadEntry(void* controller) {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    static_cast<CWebCtrl*>(controller)->DetectSvc();
    return nullptr;
}

void CWebCtrl::DetectSvc() {
    const unsigned long self = pthread_self();
    Logger::getInstance()->log("<@%s, L%d>CWebCtrl::DetectSvc, tid=%lu\n", __func__, kDetectSvcLine,
                               self);
    DebugPrint(4, "\033[35m\033[1m[LOG  ]<@%s, L%d>:CWebCtrl::DetectSvc, tid=%lu\n\033[0m",
               __func__, kDetectSvcLine, self);
    RunWebServer(m_szWebRoot);
    m_bStarted = 0;
}
