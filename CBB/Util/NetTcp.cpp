// SPDX-License-Identifier: GPL-2.0-only
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "CBB/Util/NetTool.h"

int SetTcpKeepAlive(int socket, int idle) {
    const struct {
        int level;
        int option;
        int value;
        const char* name;
        const char* lineEnd;
    } steps[] = {
        {SOL_SOCKET, SO_KEEPALIVE, 1, "SO_KEEPALIVE", ""},
        {IPPROTO_TCP, TCP_KEEPIDLE, idle, "TCP_KEEPIDLE", "\n"},
        {IPPROTO_TCP, TCP_KEEPINTVL, idle / 3 == 0 ? 1 : idle / 3, "TCP_KEEPINTVL", "\n"},
        {IPPROTO_TCP, TCP_KEEPCNT, 3, "TCP_KEEPCNT", "\n"},
    };
    for (const auto& step : steps) {
        if (setsockopt(socket, step.level, step.option, &step.value, sizeof(step.value)) != 0) {
            printf("setsockopt %s: %s%s", step.name, strerror(errno), step.lineEnd);
            return -1;
        }
    }
    return 0;
}

int IsTcpEstablished(int socket) {
    if (socket <= 0)
        return 0;
    tcp_info info = {};
    socklen_t size = sizeof(info);
    if (getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) != 0)
        return 0;
    return info.tcpi_state == TCP_ESTABLISHED ? 1 : 0;
}
