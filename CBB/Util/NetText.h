// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "CBB/Util/NetTool.h"

// What /proc/net/route and resolv.conf(5) say, from their bytes. Any bytes will do.

// "192.168.50.2" of an address in network byte order.
std::string DottedText(uint32_t addr);

struct RouteRow {
    char szIfName[64]; // longer names are cut
    uint32_t uiDst;
    uint32_t uiGateway;
    uint32_t uiFlags;
    uint32_t uiMask;

    bool IsDefault() const;
};

// How a caller reads the table: the size of its line buffer, whose overrun starts a new line, and
// the fields that a line has to have to count.
struct RouteForm {
    size_t lineSize;
    int fields;
};
constexpr RouteForm kRouteLookup = {4096, 11};
constexpr RouteForm kRouteDeletion = {256, 8};
constexpr RouteForm kRouteList = {4096, 8};

// The header line is no row: its words are no numbers.
std::vector<RouteRow> ParseRoutes(std::string_view text, const RouteForm& form);

// Fills up to `capacity` slots and returns how many.
int ParseNameServers(std::string_view text, DnsServerText* slots, int capacity);
