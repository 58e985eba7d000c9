// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/ExchangeQueue.h"

#include <list>
#include <mongoose.h>
#include <string>

#include "CBB/WebCtrl/Http/HttpConnection.h"
#include "CBB/WebCtrl/WebCtrl.h"

namespace {

// Exchanges are made in one go until they have taken so long. Then the others get as many turns as
// taking in a full backlog of new clients or sending a file of 2 MiB needs.
constexpr uint64_t kExchangesMs = 10;
constexpr int kTurnsOfOthers = 128;

struct WaitingRequest {
    unsigned long connection; // the library's number
    std::string text;         // head and body
};
// Of the web thread alone.
std::list<WaitingRequest> g_waiting;
int g_turnsOfOthers = 0;

void GiveOthersTurns(uint64_t startMs) {
    g_turnsOfOthers = mg_millis() - startMs < kExchangesMs ? 0 : kTurnsOfOthers;
}

void ServeOldest(mg_mgr* manager) {
    const WaitingRequest request = std::move(g_waiting.front());
    g_waiting.pop_front();
    mg_connection* connection = manager->conns;
    while (connection != nullptr && connection->id != request.connection)
        connection = connection->next;
    if (connection == nullptr) // its client is gone
        return;
    mg_http_message message;
    mg_http_parse(request.text.data(), request.text.size(), &message);
    // The library has put a chunked body together before, so that all that follows is the body.
    message.body =
        mg_str_n(request.text.data() + message.head.len, request.text.size() - message.head.len);
    CWebCtrl::GetInstance()->DoHttpRequest(connection, &message);
}

} // namespace

void AnswerInTurn(mg_connection* connection, mg_http_message* message) {
    if (g_waiting.empty() && g_turnsOfOthers == 0) {
        const uint64_t start = mg_millis();
        CWebCtrl::GetInstance()->DoHttpRequest(connection, message);
        GiveOthersTurns(start);
        return;
    }
    LetWait(connection);
    g_waiting.push_back(
        {connection->id, std::string(message->head.buf, message->head.len + message->body.len)});
}

bool ExchangesWait() {
    return !g_waiting.empty();
}

void ServeExchanges(mg_mgr* manager, bool othersServed) {
    if (othersServed && g_turnsOfOthers > 0) {
        --g_turnsOfOthers;
        return;
    }
    const uint64_t start = mg_millis();
    while (!g_waiting.empty() && mg_millis() - start < kExchangesMs)
        ServeOldest(manager);
    GiveOthersTurns(start);
}
