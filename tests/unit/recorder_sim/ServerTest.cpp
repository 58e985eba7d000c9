// SPDX-License-Identifier: GPL-2.0-only
#include "tools/recorder_sim/Server.h"

#include "tests/unit/Unit.h"
#include "tools/recorder_sim/State.h"

TEST(Server, AnswersLateAndFromElsewhereUntilASignal) {
    Options options;
    options.delayMs = 30;
    options.wrongPort = true;
    Recorder recorder(SampleState(), {}, nullptr);
    Server server(options);
    std::string error;
    ASSERT_TRUE(server.Open(error) && server.Add(recorder, "127.0.0.1", 0, error)) << error;
    const int port = std::stoi(server.Endpoint().substr(strlen("127.0.0.1:")));
    EXPECT_FALSE(server.Add(recorder, "127.0.0.1", static_cast<uint16_t>(port), error));
    std::thread running(&Server::Run, &server);

    const Descriptor fd(socket(AF_INET, SOCK_DGRAM, 0));
    sockaddr_in peer{AF_INET, htons(static_cast<uint16_t>(port)), {htonl(INADDR_LOOPBACK)}, {}};
    auto* address = reinterpret_cast<sockaddr*>(&peer);
    socklen_t length = sizeof(peer);
    const auto start = std::chrono::steady_clock::now();
    sendto(fd.Get(), "?", 1, 0, address, length);
    char answer[64] = "";
    recvfrom(fd.Get(), answer, sizeof(answer) - 1, 0, address, &length);
    EXPECT_STREQ(answer, "<VariCfgSec Action=\"\" Result=\"1\"/>");
    EXPECT_NE(ntohs(peer.sin_port), port);
    EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(29));
    kill(getpid(), SIGTERM);
    running.join();
}
