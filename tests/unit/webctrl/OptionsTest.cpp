// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Options.h"

#include <wordexp.h>

#include "tests/unit/Unit.h"

// What a command line is read as.
static std::string Read(const std::string& line) {
    wordexp_t words;
    wordexp(("webctrl " + line).c_str(), &words, 0);
    optind = 1;
    const Options o = ReadOptions(static_cast<int>(words.we_wordc), words.we_wordv);
    wordfree(&words);
    std::string text = std::to_string(o.port) + " " + o.recorderIp + ":" +
                       std::to_string(o.recorderPort) + " [" + o.webRoot + "]";
    for (const std::string& host : o.allowedHosts)
        text += " " + host;
    return text + (o.maskSecrets ? " masked" : "") + " [" + o.loginFile + "] [" + o.tlsCert +
           "] [" + o.tlsKey + "]";
}

// What is refused stands in command.txt of the system tests.
TEST(Options, AreTaken) {
    const std::string root(127, 'r');
    const std::pair<std::string, std::string> cases[] = {
        {"", "80 127.0.0.1:6000 [] [] [] []"},
        {"--port 1 --recorder=0.0.0.0:65535 --mask-secrets", "1 0.0.0.0:65535 [] masked [] [] []"},
        {"--allow-host a-Z.9 --allow-host=b --login l", "80 127.0.0.1:6000 [] a-Z.9 b [l] [] []"},
        {"--tls-cert c --tls-key k --web-root " + root,
         "443 127.0.0.1:6000 [" + root + "] [] [c] [k]"},
        {"--tls-cert c --tls-key k --port 65535", "65535 127.0.0.1:6000 [] [] [c] [k]"},
    };
    for (const auto& [line, read] : cases)
        EXPECT_EQ(Read(line), read);
}
