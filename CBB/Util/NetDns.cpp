// SPDX-License-Identifier: GPL-2.0-only
#include <arpa/inet.h>
#include <cstdio>
#include <cstring>
#include <netdb.h>
#include <resolv.h>
#include <string>

#include "CBB/Util/CopyText.h"
#include "CBB/Util/FileFun.h"
#include "CBB/Util/Lock.h"
#include "CBB/Util/NetShared.h"
#include "CBB/Util/NetTool.h"
#include "CBB/Util/Owner.h"

namespace {

constexpr char kResolverFile[] = "/etc/resolv.conf";

struct CachedServer {
    char szDotted[20];
    uint32_t uiAddr;
};

// A resolver that found the tools' lock taken reads the cache while the lock's holder may write it,
// so the cache has a lock of its own, held for a copy only.
pthread_mutex_t g_stCacheLock = PTHREAD_MUTEX_INITIALIZER;
CachedServer g_stCache = {"192.168.0.10", 0};

void StoreInCache(const CachedServer& server) {
    const AutoLock lock(&g_stCacheLock);
    g_stCache = server;
}

CachedServer Cached() {
    const AutoLock lock(&g_stCacheLock);
    return g_stCache;
}

void Deliver(const CachedServer& server, char* dotted, uint32_t* addr) {
    if (dotted != nullptr)
        memcpy(dotted, server.szDotted, strlen(server.szDotted) + 1);
    if (addr != nullptr)
        *addr = server.uiAddr;
}

int ResolveDotted(const char* text, char* dotted, uint32_t* addr) {
    if (dotted != nullptr)
        snprintf(dotted, INET_ADDRSTRLEN, "%s", text);
    in_addr value;
    if (addr == nullptr)
        return 0;
    if (inet_aton(text, &value) == 0)
        return -1;
    *addr = value.s_addr;
    return 0;
}

} // namespace

int AddDnsServer(const char* text, bool append) {
    const AutoLock lock(&g_stNetToolLock);
    const FilePtr file(fopen(kResolverFile, append ? "a+e" : "w+e"));
    if (!file) {
        puts("open file Failed!");
        return -1;
    }
    printf("open file successful!");
    printf("dns_str = %s\n", text);
    char line[256];
    snprintf(line, sizeof(line), "nameserver %s", text);
    printf("tmpstr1 = %s\n", line);
    fprintf(file.get(), "%s\n", line);
    return 0;
}

int GetDnsServers(DnsServerText* slots, int* count) {
    const AutoLock lock(&g_stNetToolLock);
    std::string text;
    if (!ReadTextFile(kResolverFile, &text)) {
        puts("Failed opening /etc/resolv.conf file ");
        *count = 0;
        return -1;
    }
    *count = ParseNameServers(text, slots, *count);
    return 0;
}

int IsDomainName(const char* text) {
    if (text == nullptr || text[0] == '\0')
        return -1;
    return text[strspn(text, "0123456789.")] != '\0' ? 1 : 0;
}

int ResolveServerAddress(const char* text, char dotted[20], uint32_t* addr) {
    const int isName = IsDomainName(text);
    if (isName < 0)
        return -1;
    if (isName == 0)
        return ResolveDotted(text, dotted, addr);

    if (pthread_mutex_trylock(&g_stNetToolLock) != 0) {
        const CachedServer server = Cached();
        Deliver(server, dotted, addr);
        fprintf(stderr, "server ip = %s\n", server.szDotted);
        return -1;
    }
    const hostent* host = gethostbyname(text);
    if (host != nullptr) {
        CachedServer server = {};
        memcpy(&server.uiAddr, host->h_addr_list[0], sizeof(server.uiAddr));
        CopyText(server.szDotted, DottedText(server.uiAddr));
        StoreInCache(server);
        Deliver(server, dotted, addr);
        if (dotted != nullptr)
            printf("server ip = %s\n", dotted);
        pthread_mutex_unlock(&g_stNetToolLock);
        return 0;
    }
    herror("gethostbyname");
    fprintf(stderr, "domain = %s\n", text);
    Deliver(Cached(), dotted, addr);
    pthread_mutex_unlock(&g_stNetToolLock);
    res_init();
    fputs("clear dns server!\n", stderr);
    return -1;
}
