// SPDX-License-Identifier: GPL-2.0-only
#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <net/if.h>
#include <net/route.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "CBB/Util/CopyText.h"
#include "CBB/Util/FileFun.h"
#include "CBB/Util/Lock.h"
#include "CBB/Util/NetShared.h"
#include "CBB/Util/NetTool.h"
#include "CBB/Util/Owner.h"

namespace {

constexpr char kRouteFile[] = "/proc/net/route";
constexpr int kActionAdd = 1;
constexpr int kActionDelete = 2;

enum class Kind : uint8_t { Unknown, Host, Network };

Kind Resolve(const char* text, sockaddr* out) {
    sockaddr_in addr = {};
    addr.sin_family = AF_INET;
    const bool isDefault = strcmp(text, "default") == 0;
    if (!isDefault && inet_aton(text, &addr.sin_addr) == 0)
        return Kind::Unknown;
    memcpy(out, &addr, sizeof(addr));
    return isDefault ? Kind::Network : Kind::Host;
}

uint32_t AddressOf(const sockaddr& in) {
    sockaddr_in addr;
    memcpy(&addr, &in, sizeof(addr));
    return addr.sin_addr.s_addr;
}

// The first row of the interface that `wanted` takes.
template <typename Wanted>
int FindRoute(const char* name, const Wanted& wanted, uint32_t RouteRow::* field, uint32_t* out) {
    if (name == nullptr)
        return -1;
    const AutoLock lock(&g_stNetToolLock);
    std::vector<RouteRow> rows;
    if (!ReadRoutes(kRouteLookup, &rows))
        return -1;
    *out = 0;
    for (const RouteRow& row : rows) {
        if (strcmp(row.szIfName, name) == 0 && wanted(row)) {
            *out = row.*field;
            break;
        }
    }
    return 0;
}

void PrintRow(const char* step, const RouteRow& row) {
    printf("DelRoute, %s: ifName=%s, flgs:%ld, dest:%ld, mask:%ld, gatew:0x%x.\n", step,
           row.szIfName, static_cast<long>(row.uiFlags), static_cast<long>(row.uiDst),
           static_cast<long>(row.uiMask), row.uiGateway);
}

// Of every interface for a null name. `line` is the place that a failure is reported for.
int DeleteDefaultRoutes(const char* name, int line) {
    const AutoLock lock(&g_stNetToolLock);
    std::vector<RouteRow> rows;
    if (!ReadRoutes(kRouteDeletion, &rows)) {
        printf("===>>File:%s-Line:%d fopen failed %s\n", "CBB/Util/NetTool", line, strerror(errno));
        return -1;
    }
    for (const RouteRow& row : rows) {
        PrintRow("Get", row);
        if (row.IsDefault() && (name == nullptr || strcmp(row.szIfName, name) == 0)) {
            PrintRow("Del", row);
            SetRoute(row.szIfName, row.uiGateway, kActionDelete);
        }
    }
    return 0;
}

} // namespace

bool ReadRoutes(const RouteForm& form, std::vector<RouteRow>* rows) {
    std::string text;
    if (!ReadTextFile(kRouteFile, &text))
        return false;
    *rows = ParseRoutes(text, form);
    return true;
}

bool BuildRoute(const char* dst, uint32_t mask, const char* gateway, unsigned short flags,
                rtentry* route) {
    *route = {};
    route->rt_flags = flags;
    if (Resolve(dst, &route->rt_dst) == Kind::Unknown) {
        printf("SetRoute failed, resolving default");
        return false;
    }
    const Kind gatewayKind = Resolve(gateway, &route->rt_gateway);
    if (gatewayKind == Kind::Unknown) {
        printf("SetRoute failed, resolving %s\n", gateway);
        return false;
    }
    if (gatewayKind == Kind::Network) {
        printf("error");
        return false;
    }
    route->rt_flags |= RTF_GATEWAY;
    Resolve("default", &route->rt_genmask);
    if (mask != 0) {
        const uint32_t hostBits = ~ntohl(mask);
        if ((flags & RTF_HOST) != 0 && hostBits != 0) {
            printf("SetRoute, netmask %.8x and host route conflict\n", ntohl(mask));
            return false;
        }
        if ((hostBits & (hostBits + 1)) != 0) {
            printf("SetRoute, bogus netmask %.8x", ntohl(mask));
            return false;
        }
        if ((AddressOf(route->rt_dst) & ~mask) != 0) {
            printf("SetRoute, netmask and route address conflict");
            return false;
        }
        Resolve(DottedText(mask).c_str(), &route->rt_genmask);
    }
    return true;
}

int SetRoute(const char* name, uint32_t gateway, int action) {
    const std::string text = DottedText(gateway);
    printf("SetRoute, [0x%0x] - [%s], Action=%d\n", gateway, text.c_str(), action);
    rtentry route;
    if (!BuildRoute("default", 0, text.c_str(), RTF_UP, &route))
        return -1;
    char device[IFNAMSIZ] = "";
    if (name != nullptr) {
        CopyText(device, name);
        route.rt_dev = device;
    }

    const CDescriptor sock(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (sock.Get() < 0) {
        printf("SetRoute, set route open socket failed");
        return -1;
    }
    const int request = action == kActionAdd ? SIOCADDRT : SIOCDELRT;
    if (ioctl(sock.Get(), static_cast<unsigned long>(request), &route) != 0)
        printf("SetRoute ioctl failed, SIOC[ADD|DEL]RT, iRequest=%d, err:%s. \n", request,
               strerror(errno));
    else
        printf("SetRoute ioctl ok, SIOC[ADD|DEL]RT, iRequest=0x%x. \n", request);
    return 0;
}

int GetIfGateway(const char* name, uint32_t* gateway) {
    const auto wanted = [](const RouteRow& row) { return row.IsDefault(); };
    return FindRoute(name, wanted, &RouteRow::uiGateway, gateway);
}

int GetIfNetRoute(const char* name, uint32_t* dst) {
    const auto wanted = [](const RouteRow& row) { return row.uiDst != 0; };
    return FindRoute(name, wanted, &RouteRow::uiDst, dst);
}

int GetAllDefaultGateway(int* count, DefaultGateway* entries) {
    const AutoLock lock(&g_stNetToolLock);
    std::vector<RouteRow> rows;
    if (!ReadRoutes(kRouteLookup, &rows)) {
        printf("GetAllDefaultGateway, open file[%s] faild.", kRouteFile);
        return -1;
    }
    const int capacity = *count;
    *count = 0;
    for (const RouteRow& row : rows) {
        if (!row.IsDefault() || *count >= capacity)
            continue;
        DefaultGateway* entry = &entries[(*count)++];
        *entry = {row.uiMask, row.uiGateway, ""};
        CopyText(entry->szIfName, row.szIfName);
    }
    return 0;
}

int DelDefaultRoutes() {
    return DeleteDefaultRoutes(nullptr, 904);
}

int DelRoute(const char* name) {
    if (name == nullptr)
        return -1;
    printf("DelRoute, ifName=%s.\n", name);
    return DeleteDefaultRoutes(name, 950);
}

int SetDefaultGateway(const char* name, uint32_t gateway) {
    if (name == nullptr)
        return -2;
    DelDefaultRoutes();
    {
        const AutoLock lock(&g_stNetToolLock);
        SetRoute(name, gateway, kActionAdd);
    }
    AddDnsServer("8.8.8.8", false);
    AddDnsServer("8.8.4.4", true);
    return 0;
}
