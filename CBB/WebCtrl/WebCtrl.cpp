// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/WebCtrl.h"

#include <cerrno>
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
#include "CBB/WebCtrl/PrintLine.h"

namespace {

constexpr unsigned kRestartPauseSeconds = 2;
constexpr char kLoopbackUp[] = "/sbin/ifconfig lo 127.0.0.1";
constexpr char kLoopbackUpUnseen[] = "/sbin/ifconfig lo 127.0.0.1 >/dev/null 2>&1";
// The fixed line number in the line that the web thread prints when it starts.
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
    PrintLine("CWebCtrl::Init, ip:", ip, ", port:", port, ".\n");
    CopyText(m_szInitIp, ip);
    return SetCtrlAddr(ip, port);
}

int CWebCtrl::SetCtrlAddr(const char* ip, int port) {
    CopyText(m_szDstIp, ip);
    m_usDstPort = static_cast<uint16_t>(port);
    return 0;
}

void CWebCtrl::SetWebRoot(const char* webRoot) {
    CopyText(m_szWebRoot, webRoot);
}

int CWebCtrl::Start(const char* webRoot) {
    if (m_bStarted != 0) {
        PrintLine("CWebCtrl::Start, is already started.\n");
        return 0;
    }
    // The status is not looked at: loopback is up on most systems. Where it is not, the first
    // exchange fails and prints so.
    [[maybe_unused]] const int status = system(ConsoleIsReady() ? kLoopbackUp : kLoopbackUpUnseen);
    m_bStarted = 1;
    if (webRoot != m_szWebRoot) // Restart passes our own field
        SetWebRoot(webRoot);
    ThreadHandle* thread = nullptr;
    const int error = ThreadCreate(WebSvcThreadEntry, this, &thread, 0);
    if (error != 0) {
        PrintLine("CWebCtrl Start err, create rt svc pthread failed [", error, "].\n");
        m_bStarted = 0;
        return -1;
    }
    m_hThread = thread;
    return 0;
}

int CWebCtrl::Stop(long, long) {
    m_bStarted = 0;
    // Called on the web thread, joining itself fails at once, and the thread runs on.
    if (ThreadHandle* thread = m_hThread.exchange(nullptr))
        ThreadStopAndFree(thread);
    return 0;
}

int CWebCtrl::Restart(long a, long b) {
    Stop(a, b);
    CopyText(m_szDstIp, m_szInitIp);
    ConsoleFlush();
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
    DebugPrint(kDebugTrace, DEBUG_TRACE_FORMAT("CWebCtrl::DetectSvc, tid=%lu\n"), __func__,
               kDetectSvcLine, self);
    RunWebServer(*this);
    m_bStarted = 0;
}
