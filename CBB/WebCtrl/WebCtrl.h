// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

class ControlLink;
class TiXmlDocument;
class TiXmlElement;
struct ThreadHandle;
struct mg_connection;
struct mg_http_message;

// Command of a control message, from its `Action`.
enum ParaCmdType {
    BROAD_SEARCH = 0,
    DEVICE_QUERY = 1,
    DEVICE_SET = 2,
    DEVICE_REBOOT = 3,
    DEVICE_FORMAT = 4,
    DEVICE_UNSUPPORTED = 5,
};

// Room that a caller of GetParaInfoByCmd gives the reply: 1024 bytes and a NUL.
constexpr int kReplyCapacity = 1025;
// Room that a caller of GetParaAttrValue gives the value, its NUL included; longer ones are cut.
constexpr int kAttrValueCapacity = 512;

// The service: owns the web thread and knows where the recorder's main application listens.
//
// One object lives as long as the process. Its fields are written before the web thread starts, and
// afterwards by that thread alone. The two atomic ones are written by both threads.
class CWebCtrl {
public:
    // The one object. The first call creates it; that call must come from the main thread, before
    // any other thread runs. Without memory it returns null with errno ENOMEM, and the next call
    // tries again.
    static CWebCtrl* GetInstance();

    CWebCtrl();
    virtual ~CWebCtrl();
    CWebCtrl(const CWebCtrl&) = delete;
    CWebCtrl& operator=(const CWebCtrl&) = delete;

    // Sets the main application's address: IPv4 text (cut to 31 characters) and UDP port in host
    // order. Returns 0.
    virtual int Init(const char* ip, int port);

    // Brings up loopback and starts the web thread on `webRoot` (cut to 127 characters).
    // Returns 0, also when already started, or -1 when no thread could be created.
    virtual int Start(const char* webRoot);

    // Waits for the web thread, forgets it and returns 0. The thread cannot be cancelled: a call
    // from another thread waits until the server ends by itself; after a call from the web thread
    // that thread runs on. The arguments are ignored.
    virtual int Stop(long a = 0, long b = 0);

    // Calls Stop, restores the IP address given to Init, waits 2 s and calls Start. Returns 0
    // whatever Start returned. Handlers call it on the web thread after an accepted write.
    virtual int Restart(long a = 0, long b = 0);

    // Sends later exchanges elsewhere, and returns 0. The next Restart restores the address, not
    // the port.
    int SetCtrlAddr(const char* ip, int port);

    // TCP port of the web front, host order, 80 by default. Set it before Start.
    void SetWebPort(uint16_t port) { m_usWebPort = port; }
    uint16_t WebPort() const { return m_usWebPort; }
    // The folder that is served (cut to 127 characters); set by Start.
    void SetWebRoot(const char* webRoot);
    const char* WebRoot() const { return m_szWebRoot; }

    // Routes one complete HTTP request and answers it.
    void DoHttpRequest(mg_connection* connection, mg_http_message* message);

    // Reading a control message (Link/ControlMessage.cpp). `text` is NUL-terminated.

    // Classifies a request by its `Action`: 0 with a ParaCmdType in `*type`, or -1 when the text
    // is no control message or a reply.
    int GetParaCmdType(const char* text, int* type);
    // Copies the root's attribute `name` (exact case) into `value`, kAttrValueCapacity bytes.
    // Returns 0, or -1 when the text is no control message or has no such attribute.
    int GetParaAttrValue(const char* text, const char* name, char* value);
    // Parses `text` into `doc` and finds the root's first child element, which lives as long as
    // `doc`. Returns 0, or -1 when there is none or the text nests too deeply to be parsed.
    int GetParaSection(TiXmlDocument& doc, const char* text, TiXmlElement** section);

    // One exchange with the main application (Link/ControlLink.cpp): one attempt, at most 5 s.

    // Sends a query and receives its reply (kReplyCapacity bytes, may be the request's buffer).
    // Returns 0 with the received byte count in `*replyLen`, or -1.
    int GetParaInfoByCmd(const char* request, char* reply, int* replyLen);
    // Opens a link to the main application for one exchange. Only one link can be open at a time.
    virtual std::unique_ptr<ControlLink> OpenLink();
    // Sends a write of `len` bytes on `link` and receives its answer. Returns 0 with the answer's
    // `Result` (0: carried out) in `*result`, or -1.
    int SetParaByCmd(ControlLink& link, const char* request, int len, int* result);
    // The receiving half of SetParaByCmd.
    int GetParaResult(ControlLink& link, int* result);

    const char* DestinationIp() const { return m_szDstIp; }
    uint16_t DestinationPort() const { return m_usDstPort; }

private:
    static void* WebSvcThreadEntry(void* controller);
    void DetectSvc();

    // The first request may call Restart before Start has stored the handle.
    std::atomic<ThreadHandle*> m_hThread{nullptr};
    std::atomic<uint8_t> m_bStarted{0};
    char m_szWebRoot[128] = {};
    char m_szDstIp[32] = {};
    uint16_t m_usDstPort = 6000;
    char m_szInitIp[32] = {};
    uint16_t m_usWebPort = 80;
};
