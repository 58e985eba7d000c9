// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/ExchangeQueue.h"

namespace {

constexpr size_t kMaxWaiting = 64;
// Exchanges follow each other until they have taken this long together. Then the other clients are
// served: until they have nothing left to do, or for as long as a full backlog of new clients
// takes.
constexpr uint64_t kExchangesMs = 10;
constexpr uint64_t kOthersMs = 100;

} // namespace

void ExchangeQueue::Made(uint64_t startMs, uint64_t endMs) {
    m_othersUntilMs = endMs - startMs < kExchangesMs ? 0 : endMs + kOthersMs;
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
    if (othersServed && startMs < m_othersUntilMs)
        return;
    uint64_t nowMs = startMs;
    while (!m_waiting.empty() && nowMs - startMs < kExchangesMs) {
        const ConnectionId connection = m_waiting.front();
        m_waiting.pop_front();
        answer(connection);
        nowMs = clock();
    }
    Made(startMs, nowMs);
}
