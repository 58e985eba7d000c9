// SPDX-License-Identifier: GPL-2.0-only
// The program itself, over real sockets.
#include <arpa/inet.h>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include "tools/recorder_sim/Server.h"
#include "tools/recorder_sim/State.h"

namespace {

// The running program; its standard output and error are read line by line.
class Program {
public:
    explicit Program(const std::string& arguments)
        : m_output(popen(("echo $$; exec '" RECORDER_SIM "' 2>&1 " + arguments).c_str(), "r")),
          m_pid(std::stoi(Line())) {}
    ~Program() { End(SIGKILL); }

    std::string Line() {
        char line[2048] = "";
        return fgets(line, sizeof(line), m_output) != nullptr ? line : "";
    }
    int Port() {
        const std::string line = Line(), expected = "recorder_sim: listening on 127.0.0.1:";
        EXPECT_EQ(line.substr(0, expected.size()), expected);
        return atoi(line.c_str() + expected.size());
    }
    // The exit status, once the program ended by itself (signal 0) or by the signal.
    int End(int signal) {
        if (m_output != nullptr) {
            kill(m_pid, signal);
            m_status = pclose(m_output);
            m_output = nullptr;
        }
        return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : -1;
    }

private:
    FILE* m_output;
    pid_t m_pid;
    int m_status = 0;
};

// The answer and the port that it came from.
std::pair<std::string, int> Ask(int port, const std::string& text) {
    const Descriptor fd(socket(AF_INET, SOCK_DGRAM, 0));
    const timeval limit{5, 0};
    setsockopt(fd.Get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    sockaddr_in peer{};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(port);
    peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* address = reinterpret_cast<sockaddr*>(&peer);
    socklen_t length = sizeof(peer);
    sendto(fd.Get(), text.data(), text.size(), 0, address, length);
    char buffer[2048];
    const ssize_t size = recvfrom(fd.Get(), buffer, sizeof(buffer), 0, address, &length);
    return {std::string(buffer, size > 0 ? size : 0), ntohs(peer.sin_port)};
}

constexpr char kSet[] =
    "<VariCfgSec Action=\"DEVICE_SET\"><stCMS usFD_Port=\"4711\"/></VariCfgSec>";
constexpr char kDone[] = "<VariCfgSec Action=\"DEVICE_SET\" Result=\"0\"/>";

} // namespace

TEST(Program, AnswersSavesAndStops) {
    char folder[] = "/tmp/recorder_sim.XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string file = std::string(folder) + "/state.xml";
    XmlNode expected = SampleState();
    ASSERT_TRUE(Override(expected, "stCMS.usFD_Port=4711") &&
                Override(expected, "stCMS.uiFD_IP=x"));
    for (const int signal : {SIGTERM, SIGINT}) {
        Program program("--listen 127.0.0.1:0 --set stCMS.uiFD_IP=x --state " + file);
        const int port = program.Port();
        EXPECT_EQ(Ask(port, kSet), std::make_pair(std::string(kDone), port));
        EXPECT_EQ(program.End(signal), 0);
        XmlNode saved;
        std::string error;
        ASSERT_EQ(LoadState(file, saved, error), Loaded::Yes) << error;
        EXPECT_EQ(ToLine(saved), ToLine(expected));
    }
    unlink(file.c_str());
    EXPECT_EQ(rmdir(folder), 0) << "something was left beside the state file";
}

TEST(Program, PlaysManyEachWithItsState) {
    char folder[] = "/tmp/recorder_sim.XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string file = std::string(folder) + "/{n}.xml";
    Program program("--listen 127.0.0.1:0 --count 2 --set 'stCMS.uiFD_IP=x{n}' --state '" + file +
                    "'");
    const int first = program.Port(), second = program.Port();
    EXPECT_EQ(Ask(second, kSet), std::make_pair(std::string(kDone), second));
    EXPECT_EQ(Ask(first, "").second, first);
    EXPECT_EQ(program.End(SIGTERM), 0);
    for (const std::string number : {"1", "2"}) {
        const std::string path = std::string(folder) + "/" + number + ".xml";
        XmlNode saved;
        std::string error;
        ASSERT_EQ(LoadState(path, saved, error), Loaded::Yes) << error;
        EXPECT_EQ(*saved.FindChild("stCMS")->FindAttribute("uiFD_IP"), "x" + number);
        EXPECT_EQ(*saved.FindChild("stCMS")->FindAttribute("usFD_Port") == "4711", number == "2");
        unlink(path.c_str());
    }
    EXPECT_EQ(rmdir(folder), 0);

    Program spread("--listen=127.0.0.255:0 --count=2 --addresses");
    spread.Line();
    EXPECT_EQ(spread.Line().find("recorder_sim: listening on 127.0.1.0:"), 0u);
}

TEST(Program, AnswersLateAndFromElsewhere) {
    Program program("--listen=127.0.0.1:0 --delay=30 --wrong-port --verbose");
    const int port = program.Port();
    timespec before, after;
    clock_gettime(CLOCK_MONOTONIC, &before);
    const auto [answer, from] = Ask(port, kSet);
    clock_gettime(CLOCK_MONOTONIC, &after);
    EXPECT_EQ(answer, kDone);
    EXPECT_NE(from, port);
    EXPECT_GT(after.tv_sec - before.tv_sec + 1e-9 * (after.tv_nsec - before.tv_nsec), 0.029);
    for (const char* datagram : {kSet, kDone})
        EXPECT_NE(program.Line().find(std::string("] ") + datagram), std::string::npos);
}

TEST(Program, TellsInOneLineWhyItCannotStart) {
    Program first("--listen 127.0.0.1:0");
    const std::string taken = "--listen 127.0.0.1:" + std::to_string(first.Port());
    const struct {
        std::string arguments;
        int status;
    } cases[] = {
        {taken, 1},
        {"--state /dev/null", 1},
        {"--state /", 1},
        {"--nonsense", 2},
        {"stray", 2},
        {"--set stNone.a=1", 2},
        {"--set", 2},
        {"--delay soon", 2},
        {"--delay 1-", 2},
        {"--drop 0", 2},
        {"--result 99999999999", 2},
        {"--listen 80", 2},
        {"--listen localhost:80", 2},
        {"--listen 127.0.0.1:65536", 2},
        {"--listen 127.0.0.1:", 2},
        {"--verbose=1", 2},
        {"--state=", 2},
        {"--count 0", 2},
        {"--count 2 --state one.xml", 2},
        {"--count 2 --listen 127.0.0.1:65535", 2},
    };
    for (const auto& c : cases) {
        Program program(c.arguments);
        EXPECT_EQ(program.Line().find("recorder_sim: "), 0u) << c.arguments;
        EXPECT_EQ(program.Line(), "") << c.arguments;
        EXPECT_EQ(program.End(0), c.status) << c.arguments;
    }
}
