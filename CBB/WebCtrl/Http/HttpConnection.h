// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <cstdint>

struct mg_connection;
struct mg_http_message;

// A client's connection, from its acceptance to its end. It does what HTTP (RFC 9112) asks of a
// server around each request, and bounds what one client can cost. Only this class relies on the
// HTTP library's internals; docs/architecture.md lists them.
//
// At most one request is being answered at a time. Later ones lie unread in the socket or in the
// receive buffer.
class HttpConnection {
public:
    // Takes over a connection that the library has accepted. Without memory it closes the
    // connection and returns null.
    static HttpConnection* Open(mg_connection* connection, uint64_t nowMs);
    // The object that belongs to the library's connection; null for a listener.
    static HttpConnection* Of(mg_connection* connection);
    // Call it when the library closes the connection. It destroys the object.
    void Close();

    // Takes the library's events of this connection, except its acceptance and its end.
    void OnEvent(int event, uint64_t nowMs);

    // Gives the next request once it is whole and the one before it is answered. The caller then
    // has to Answer it, LetWait it or Refuse it. False when there is none yet. A request that
    // cannot be read is refused here.
    bool NextRequest(mg_http_message& message);

    // Calls `answer`, which answers the request at once or, for a file, over the next turns of the
    // loop. Then sends what the socket takes.
    template <typename AnswerWith>
    void Answer(mg_http_message& message, AnswerWith answer) {
        BeginAnswer(message);
        answer();
        EndAnswer();
    }

    // Leaves the request in the buffer until ResumeRequest gives it again. A client that closes its
    // side meanwhile counts as gone.
    void LetWait() { m_waits = true; }
    bool ResumeRequest(mg_http_message& message);

    // Answers with a status and a sentence, and ends the connection.
    // @param headers further header lines, each with its CRLF
    void Refuse(int status, const char* reason, const char* headers = "");

    // Whether it may be closed to make room for a new client: nothing is being answered or sent.
    bool IsIdle() const;
    // When it was served last, in milliseconds of the library's clock.
    uint64_t ServedAtMs() const { return m_servedAtMs; }
    // Whether a request may lie in the receive buffer.
    bool HasMore() const;
    unsigned long Id() const;
    mg_connection* Library() const { return m_connection; }

private:
    explicit HttpConnection(mg_connection* connection, uint64_t nowMs);
    void BeginAnswer(mg_http_message& message);
    void EndAnswer();
    void Settle();
    void SendAtOnce();
    void LookForEnd();
    void OnTurn(uint64_t nowMs);

    mg_connection* m_connection;
    uint64_t m_deadlineMs; // closed when the library's clock passes it
    uint64_t m_servedAtMs;
    size_t m_requestBytes = 0; // of the request being answered, as sent
    size_t m_wantedBytes = 1;  // with fewer bytes received the request is not looked at again
    size_t m_answerAt = 0;     // where in the send buffer the answer begins
    bool m_chunked = false;    // of the request being answered
    bool m_isHead = false;     // likewise
    bool m_last = false;       // no request after the one in progress is answered
    bool m_waits = false;      // for the answer to its request, which the server has put off
    bool m_inputEnded = false; // the client has closed its side
    bool m_drops = false;      // what still comes is read and dropped
    bool m_shut = false;       // this side is closed, after the last answer
};
