// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Options.h"

#include <wordexp.h>

#include "tests/unit/Unit.h"

// What a command line is read as, or how it is refused.
static std::string Read(const std::string& line) {
    wordexp_t words;
    wordexp(("webctrl " + line).c_str(), &words, 0);
    const Captured child = CaptureInChild([&] {
        const Options o = ReadOptions(static_cast<int>(words.we_wordc), words.we_wordv);
        printf("%d %s:%d [%s]", o.port, o.recorderIp.c_str(), o.recorderPort, o.webRoot.c_str());
        for (const std::string& host : o.allowedHosts)
            printf(" %s", host.c_str());
        printf("%s", o.maskSecrets ? " masked" : "");
        printf(" [%s] [%s] [%s]", o.loginFile.c_str(), o.tlsCert.c_str(), o.tlsKey.c_str());
        return 0;
    });
    wordfree(&words);
    return std::to_string(WEXITSTATUS(child.status)) + " " +
           child.out.substr(0, child.out.find('\n')) + child.err;
}

// More are refused in command.txt of the system tests.
TEST(Options, AreTakenOrRefused) {
    const std::string root(127, 'r'), path = "--web-root takes a path of 1 to 127 bytes";
    const std::string recorder = "--recorder takes IP:PORT, such as 127.0.0.1:6000, not ";
    const std::string port = "--port takes a number from 1 to 65535, not ";
    const std::pair<std::string, std::string> cases[] = {
        {"", "80 127.0.0.1:6000 [] [] [] []"},
        {"--port 1 --recorder=0.0.0.0:65535 --mask-secrets", "1 0.0.0.0:65535 [] masked [] [] []"},
        {"--allow-host a-Z.9 --allow-host=b --login l", "80 127.0.0.1:6000 [] a-Z.9 b [l] [] []"},
        {"--tls-cert c --tls-key k --web-root " + root,
         "443 127.0.0.1:6000 [" + root + "] [] [c] [k]"},
        {"--tls-cert c --tls-key k --port 65535", "65535 127.0.0.1:6000 [] [] [c] [k]"},
    };
    for (const auto& [line, read] : cases)
        EXPECT_EQ(Read(line), "0 " + read);
    const std::pair<std::string, std::string> refused[] = {
        {"--port 65536", port + "'65536'"},
        {"--port 80x", port + "'80x'"},
        {"--port", "--port needs a value"},
        {"--recorder 127.0.0.1", recorder + "'127.0.0.1'"},
        {"--recorder 127.0.0.1:0", recorder + "'127.0.0.1:0'"},
        {"--web-root " + root + "r", path},
        {"--web-root a,b", "--web-root cannot take a path with ',' or '=': 'a,b'"},
        {"--allow-host a_b", "--allow-host takes a domain name, not 'a_b'"},
        {"--login=", "--login takes the path of a file"},
    };
    for (const auto& [line, reason] : refused)
        EXPECT_EQ(Read(line), "2 webctrl: " + reason + "; try --help\n");
}
