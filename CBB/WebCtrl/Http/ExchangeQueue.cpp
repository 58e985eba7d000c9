// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/ExchangeQueue.h"

namespace {

constexpr size_t kMaxWaiting = 64;
// Exchanges follow each other until they have taken this long together. Then the other clients are
// served: until they have nothing left to do, or for as long as a full backlog of new clients
// takes. A turn accepts one client; on a processor that is busy otherwise the time passes without
// any.
constexpr uint64_t kExchangesMs = 10;
constexpr uint64_t kOthersMs = 100;
constexpr int kOthersTurns = 20;

} // namespace

void ExchangeQueue::Made(uint64_t startMs, uint64_t endMs) {
    const bool wasLong = endMs - startMs >= kExchangesMs;
    m_othersUntilMs = wasLong ? endMs + kOthersMs : 0;
    m_othersTurns = wasLong ? kOthersTurns : 0;
}

bool ExchangeQueue::Enter(ConnectionId connection) {
    if (m_waiting.size() >= kMaxWaiting)
        return false;
    m_waiting.push_back(connection);
    return true;
}

void ExchangeQueue::Serve(bool othersServed, const std::function<void(ConnectionId)>& answer,
                          const std::function<uint64_t()>& clock) {
    const uint64_t startMs = clock();
    if (othersServed && (m_othersTurns > 0 || startMs < m_othersUntilMs)) {
        --m_othersTurns;
        return;
    }
    uint64_t nowMs = startMs;
    while (!m_waiting.empty() && nowMs - startMs < kExchangesMs) {
        const ConnectionId connection = m_waiting.front();
        m_waiting.pop_front();
        answer(connection);
        nowMs = clock();
    }
    Made(startMs, nowMs);
}
