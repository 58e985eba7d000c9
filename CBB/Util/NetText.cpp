// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/NetText.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <net/route.h>

#include "CBB/Util/CopyText.h"

namespace {

constexpr size_t kResolverLineSize = 200;
constexpr std::string_view kBlank = " \t\r\n\v\f";

// What fgets(3) with a buffer of `size` would take from the front: the line end stays.
std::string_view TakeLine(std::string_view* text, size_t size) {
    const size_t limit = std::min(size - 1, text->size());
    const size_t end = text->substr(0, limit).find('\n');
    const std::string_view line = text->substr(0, end == std::string_view::npos ? limit : end + 1);
    text->remove_prefix(line.size());
    return line;
}

std::string_view TakeToken(std::string_view* line, std::string_view separators) {
    line->remove_prefix(std::min(line->find_first_not_of(separators), line->size()));
    const std::string_view token = line->substr(0, line->find_first_of(separators));
    line->remove_prefix(token.size());
    return token;
}

// Wider than a field, since the decimal counters, which may be negative, have to pass as well.
bool ParseHex(std::string_view token, uint32_t* value) {
    const char* end = token.data() + token.size();
    int64_t number = 0;
    const auto result = std::from_chars(token.data(), end, number, 16);
    *value = static_cast<uint32_t>(number);
    return result.ec == std::errc() && result.ptr == end;
}

bool ParseRoute(std::string_view line, int fields, RouteRow* row) {
    const std::string_view name = TakeToken(&line, kBlank);
    if (name.empty())
        return false;
    CopyText(row->szIfName, name);
    uint32_t columns[11] = {}; // the name's own stays empty
    for (int i = 1; i < fields; ++i)
        if (!ParseHex(TakeToken(&line, kBlank), &columns[i]))
            return false;
    row->uiDst = columns[1];
    row->uiGateway = columns[2];
    row->uiFlags = columns[3];
    row->uiMask = columns[7];
    return true;
}

} // namespace

std::string DottedText(uint32_t addr) {
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &addr, text, sizeof(text));
}

bool RouteRow::IsDefault() const {
    return uiFlags == (RTF_UP | RTF_GATEWAY) && uiDst == 0 && uiMask == 0;
}

std::vector<RouteRow> ParseRoutes(std::string_view text, const RouteForm& form) {
    std::vector<RouteRow> rows;
    RouteRow row;
    while (!text.empty())
        if (ParseRoute(TakeLine(&text, form.lineSize), form.fields, &row))
            rows.push_back(row);
    return rows;
}

int ParseNameServers(std::string_view text, DnsServerText* slots, int capacity) {
    constexpr std::string_view kKeyword = "nameserver";
    int count = 0;
    while (!text.empty() && count < capacity) {
        std::string_view line = TakeLine(&text, kResolverLineSize);
        if (line.substr(0, kKeyword.size()) != kKeyword)
            continue;
        TakeToken(&line, " ");
        const std::string_view server = TakeToken(&line, " ");
        if (!server.empty())
            CopyText(slots[count++], server);
    }
    return count;
}
