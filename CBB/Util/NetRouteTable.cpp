// SPDX-License-Identifier: GPL-2.0-only
#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "CBB/Util/CopyText.h"
#include "CBB/Util/Lock.h"
#include "CBB/Util/NetShared.h"
#include "CBB/Util/NetTool.h"

namespace {

struct TableFreer {
    void operator()(RouteNode* node) const {
        while (node != nullptr) {
            RouteNode* next = node->pNext;
            free(node);
            node = next;
        }
    }
};
using RouteTable = std::unique_ptr<RouteNode, TableFreer>;

constexpr char kNoTable[] = "can not get route table\n";

void PrintIfName(int line, const char* name) {
    printf("-----FUN:%s, LINE:%d, strIfName:%s.\n", "GetDstAddrRouteIfAddr", line, name);
}

} // namespace

RouteNode* ReadRouteTable() {
    const AutoLock lock(&g_stNetToolLock);
    std::vector<RouteRow> rows;
    if (!ReadRoutes(kRouteList, &rows)) {
        perror("can't open file!\n");
        exit(1);
    }
    RouteNode* head = nullptr;
    RouteNode** next = &head;
    for (const RouteRow& row : rows) {
        auto* node = static_cast<RouteNode*>(calloc(1, sizeof(RouteNode)));
        if (node == nullptr) {
            fputs("can not malloc !", stderr);
            exit(1);
        }
        node->uiDst = row.uiDst;
        node->uiMask = row.uiMask;
        node->uiGateway = row.uiGateway;
        CopyText(node->szIfName, row.szIfName);
        *next = node;
        next = &node->pNext;
    }
    return head;
}

int PrintRouteTable() {
    const RouteTable table(ReadRouteTable());
    if (!table)
        fputs(kNoTable, stderr);
    puts("Destination\tGenmask\t\tGateway\t\tUse Iface");
    for (const RouteNode* node = table.get(); node != nullptr; node = node->pNext) {
        for (const uint32_t addr : {node->uiDst, node->uiMask, node->uiGateway})
            printf("%s\t", DottedText(addr).c_str());
        puts(node->szIfName);
    }
    return 0;
}

uint32_t GetDstAddrRouteIfAddr(uint32_t dst) {
    const RouteTable table(ReadRouteTable());
    if (!table) {
        fputs(kNoTable, stderr);
        return INADDR_NONE;
    }
    char name[sizeof(RouteNode::szIfName)] = "";
    for (const RouteNode* node = table.get(); node != nullptr; node = node->pNext) {
        printf("-----FUN:%s, LINE:%d, uiDstIp:0x%x, inetmask.s_addr:0x%x, destion.s_addr:0x%x.\n",
               "GetDstAddrRouteIfAddr", 1126, dst, node->uiMask, node->uiDst);
        if (node->uiDst != 0 && node->uiDst == (dst & node->uiMask)) {
            memcpy(name, node->szIfName, sizeof(name));
            PrintIfName(1134, name);
            break;
        }
        if (node->uiDst == 0 && node->uiMask == 0) {
            memcpy(name, node->szIfName, sizeof(name));
            PrintIfName(1144, name);
        }
    }
    PrintIfName(1150, name);
    uint32_t addr = 0;
    return name[0] != '\0' && GetIfAddr(name, &addr) == 0 ? addr : 0;
}

const char* GetDefaultRouteIfAddrText() {
    const uint32_t addr = GetDstAddrRouteIfAddr(0);
    return addr != 0 ? inet_ntoa(in_addr{addr}) : nullptr;
}

int GetRouteIfName(const char* dst, char name[12]) {
    in_addr addr;
    if (dst == nullptr || inet_aton(dst, &addr) == 0)
        return -1;
    const RouteTable table(ReadRouteTable());
    if (!table)
        fputs(kNoTable, stderr);
    for (const RouteNode* node = table.get(); node != nullptr; node = node->pNext) {
        if (node->uiDst == (addr.s_addr & node->uiMask)) {
            memcpy(name, node->szIfName, sizeof(node->szIfName));
            return 0;
        }
    }
    return -1;
}
