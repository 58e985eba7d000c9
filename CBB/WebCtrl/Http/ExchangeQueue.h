// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>

// API requests wait here for their exchange with the recorder. With a silent recorder an exchange
// holds the thread for seconds; after such a long one all other clients are served before the next
// exchange. A connection has at most one request here, so that connections take turns. All times
// are milliseconds of one clock.
class ExchangeQueue {
public:
    using ConnectionId = unsigned long;

    // Whether a request may be answered at once: no request waits, and no other client is due.
    bool IsFree(uint64_t nowMs) const {
        return m_waiting.empty() && m_othersTurns <= 0 && nowMs >= m_othersUntilMs;
    }
    // Call it after each exchange that Serve did not make.
    void Made(uint64_t startMs, uint64_t endMs);

    // False when the queue is full.
    bool Enter(ConnectionId connection);
    // Forgets the request of a connection that is gone.
    void Leave(ConnectionId connection) { m_waiting.remove(connection); }
    // While this holds, the loop must not rest.
    bool IsWaitedFor() const { return !m_waiting.empty(); }

    // Answers waiting requests in the order in which they came. Call it in each turn of the loop,
    // after all connections had their turn.
    // @param othersServed whether anything was sent or received in this turn, or a client is about
    //                     to be accepted; more may follow
    // @param answer       answers the request of a connection
    // @param clock        tells the time
    void Serve(bool othersServed, const std::function<void(ConnectionId)>& answer,
               const std::function<uint64_t()>& clock);

private:
    std::list<ConnectionId> m_waiting;
    uint64_t m_othersUntilMs = 0;
    int m_othersTurns = 0; // that the others have at least, however long they take
};
