// SPDX-License-Identifier: GPL-2.0-only
// A main application that answers every query at once with the same base information, SIZE bytes
// long. The datagram "size N" (64 to 1024) changes that size.
//
//   bench_responder IP:PORT SIZE
#include <cstdio>
#include <cstring>
#include <sys/socket.h>

#include "bench/Endpoint.h"

namespace {

// A reply of `size` bytes: the section's attributes as far as they fit, then attributes that a
// reader has to skip, then blanks.
std::string Reply(size_t size) {
    std::string reply = "<VariCfgSec Action=\"Q\" Result=\"0\"><stBaseInfo";
    const std::string tail = "/></VariCfgSec>";
    const char* const attributes[] = {
        " strFD_DeviceNo=\"DEMO100234\"", " ucFD_TimeZone=\"20\"",
        " ucFD_TZAdjust=\"15\"",          " ucFD_DstEnable=\"1\"",
        " ucFD_DstFromMon=\"3\"",         " ucFD_DstFromDay=\"29\"",
        " ucFD_DstToMon=\"10\"",          " ucFD_DstToDay=\"25\"",
        " ucFD_NowIsDst=\"0\"",           " usFD_DstAdjust=\"3600\"",
        " ucFD_DateStyle=\"2\"",          " ucFD_GpsMode=\"4\"",
        " ucFD_GpsSTFlag=\"1\"",          " ucFD_DiskFormatFlag=\"5\"",
        " usFD_SizeOf2ndPart=\"2048\"",   " strFD_CurTime=\"2026-03-14 15:09:26\"",
    };
    for (const char* attribute : attributes)
        if (reply.size() + strlen(attribute) + tail.size() <= size)
            reply += attribute;
    for (int i = 10;; ++i) {
        const std::string other = " ucFD_Other" + std::to_string(i) + "=\"77\"";
        if (reply.size() + other.size() + tail.size() > size)
            break;
        reply += other;
    }
    reply.resize(size - tail.size(), ' ');
    return reply + tail;
}

bool SizeIsSound(int size) {
    return size >= 64 && size <= 1024;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3 || !SizeIsSound(atoi(argv[2]))) {
        fprintf(stderr, "usage: bench_responder IP:PORT SIZE, which is 64 to 1024\n");
        return 2;
    }
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in own = Endpoint(argv[1]);
    if (bind(fd, Generic(own), sizeof(own)) != 0) {
        perror("bench_responder");
        return 1;
    }
    std::string reply = Reply(static_cast<size_t>(atoi(argv[2])));
    for (;;) {
        char request[1025];
        sockaddr_in peer{};
        socklen_t length = sizeof(peer);
        const ssize_t size = recvfrom(fd, request, sizeof(request) - 1, 0,
                                      reinterpret_cast<sockaddr*>(&peer), &length);
        if (size < 0)
            continue;
        request[size] = '\0';
        if (strncmp(request, "size ", 5) == 0 && SizeIsSound(atoi(request + 5)))
            reply = Reply(static_cast<size_t>(atoi(request + 5)));
        sendto(fd, reply.data(), reply.size(), 0, Generic(peer), length);
    }
}
