// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <atomic>
#include <cstdint>

class CUdpCtrlSocket;
class TiXmlDocument;
class TiXmlElement;
struct ThreadHandle;
struct mg_connection;
struct mg_http_message;

/// Command of a control message, from its `Action`.
enum ParaCmdType {
    BROAD_SEARCH = 0,
    DEVICE_QUERY = 1,
    DEVICE_SET = 2,
    DEVICE_REBOOT = 3,
    DEVICE_FORMAT = 4,
    DEVICE_UNSUPPORTED = 5,
};

/// Room that a caller of GetParaInfoByCmd gives the reply: 1024 bytes and a NUL.
constexpr int kReplyCapacity = 1025;
/// Room that a caller of GetParaAttrValue gives the value, its NUL included; longer ones are cut.
constexpr int kAttrValueCapacity = 512;

/// The service: owns the web thread and knows where the recorder's main application listens.
///
/// One object lives as long as the process. Its fields are written before the web thread is
/// created and only read afterwards, but for the two atomic ones, which both threads touch.
class CWebCtrl {
public:
    /// The one object, created by the first call (on the main thread, before there is another).
    /// Null with errno ENOMEM when there is no memory; the next call tries again.
    static CWebCtrl* GetInstance();

    CWebCtrl();
    virtual ~CWebCtrl();
    CWebCtrl(const CWebCtrl&) = delete;
    CWebCtrl& operator=(const CWebCtrl&) = delete;

    /// Sets the main application's address: IPv4 text (cut to 31 characters) and UDP port in host
    /// order. Returns 0.
    virtual int Init(const char* ip, int port);

    /// Brings up loopback and starts the web thread on `webRoot` (cut to 127 characters).
    /// Returns 0, also when already started, or -1 when there is no thread to be had.
    virtual int Start(const char* webRoot);

    /// Ends the web thread and returns 0. The thread cannot be cancelled: called from another
    /// thread this waits until the server has ended by itself; called from the web thread the
    /// thread runs on, and only the record of it is gone. The arguments are ignored.
    virtual int Stop(long a = 0, long b = 0);

    /// Stop, the address given to Init back in force, a pause of 2 s, Start. Returns 0 whatever
    /// Start returned. Called on the web thread, inside a request, after an accepted write.
    virtual int Restart(long a = 0, long b = 0);

    /// Sends later exchanges elsewhere, until the next Restart. Returns 0.
    int SetCtrlAddr(const char* ip, int port);

    /// TCP port of the web front in host order, 80 unless set; to be set before Start.
    void SetWebPort(uint16_t port) { m_usWebPort = port; }
    uint16_t WebPort() const { return m_usWebPort; }

    /// Routes one complete HTTP request and answers it.
    void DoHttpRequest(mg_connection* connection, mg_http_message* message);

    // Reading a control message (ControlMessage.cpp). `text` is NUL-terminated.

    /// Classifies a request by its `Action`: 0 with a ParaCmdType in `*type`, or -1 when the text
    /// is no control message or a reply.
    int GetParaCmdType(const char* text, int* type);
    /// Copies the root's attribute `name` (exact case) into `value`, kAttrValueCapacity bytes.
    /// Returns 0, or -1 when the text is no control message or has no such attribute.
    int GetParaAttrValue(const char* text, const char* name, char* value);
    /// Parses `text` into `doc` and finds the root's first child element, which lives as long as
    /// `doc`. Returns 0, or -1 when there is none or the text nests too deeply to be parsed.
    int GetParaSection(TiXmlDocument& doc, const char* text, TiXmlElement** section);

    // One exchange with the main application (Link/ControlLink.cpp): one attempt, at most 5 s.

    /// Sends a query and receives its reply (kReplyCapacity bytes, may be the request's buffer).
    /// Returns 0 with the received byte count in `*replyLen`, or -1.
    int GetParaInfoByCmd(const char* request, char* reply, int* replyLen);
    /// Sends a write of `len` bytes on `sock` and receives its answer. Returns 0 with the answer's
    /// `Result` (0: carried out) in `*result`, or -1.
    int SetParaByCmd(CUdpCtrlSocket& sock, const char* request, int len, int* result);
    /// The receiving half of SetParaByCmd.
    int GetParaResult(CUdpCtrlSocket& sock, int* result);

    const char* DestinationIp() const { return m_szDstIp; }
    uint16_t DestinationPort() const { return m_usDstPort; }

private:
    static void* WebSvcThreadEntry(void* controller);
    void DetectSvc();

    // The main thread may still be on its way from creating the web thread to keeping its record
    // when that one's first request restarts the controller.
    std::atomic<ThreadHandle*> m_hThread{nullptr};
    std::atomic<uint8_t> m_bStarted{0};
    char m_szWebRoot[128] = {};
    char m_szDstIp[32] = {};
    uint16_t m_usDstPort = 6000;
    char m_szInitIp[32] = {};
    uint16_t m_usWebPort = 80;
};
