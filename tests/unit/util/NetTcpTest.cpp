// SPDX-License-Identifier: GPL-2.0-only
#include <netinet/tcp.h>

#include "CBB/Util/Owner.h"
#include "tests/unit/util/Net.h"

TEST(NetTcp, KeepAliveAndState) {
    const CDescriptor listener(socket(AF_INET, SOCK_STREAM, 0));
    const CDescriptor client(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr addr;
    socklen_t size = sizeof(addr);
    ASSERT_EQ(listen(listener.Get(), 1) + getsockname(listener.Get(), &addr, &size), 0);
    const CDescriptor folder(open("/", O_RDONLY));
    for (const int other : {client.Get(), folder.Get(), -1})
        EXPECT_EQ(IsTcpEstablished(other), 0);
    ASSERT_EQ(connect(client.Get(), &addr, size), 0);
    EXPECT_EQ(IsTcpEstablished(client.Get()), 1);

    for (const auto& [idle, interval] : {std::pair{2, 1}, {30, 10}}) {
        EXPECT_EQ(SetTcpKeepAlive(client.Get(), idle), 0);
        for (const auto& [level, name, set] : {std::tuple{SOL_SOCKET, SO_KEEPALIVE, 1},
                                               {IPPROTO_TCP, TCP_KEEPIDLE, idle},
                                               {IPPROTO_TCP, TCP_KEEPINTVL, interval},
                                               {IPPROTO_TCP, TCP_KEEPCNT, 3}}) {
            int value = -1;
            socklen_t length = sizeof(value);
            getsockopt(client.Get(), level, name, &value, &length);
            EXPECT_EQ(value, set) << name;
        }
    }
    EXPECT_EQ(Told([&] { return SetTcpKeepAlive(client.Get(), -5); }),
              "-1 setsockopt TCP_KEEPIDLE: Invalid argument\n");
}
