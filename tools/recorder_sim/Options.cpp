// SPDX-License-Identifier: GPL-2.0-only
#include "Options.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

// Nobody waits longer; a larger value is a typing error.
constexpr int kMaxDelayMs = 600000;
// Each recorder takes a descriptor, and most shells allow 1024.
constexpr int kMaxCount = 1000;
constexpr char kNumberMark[] = "{n}";

bool ParseNumber(const std::string& text, int least, int most, int& number) {
    if (text.empty() || text.find_first_not_of("-0123456789") != std::string::npos)
        return false;
    char* end = nullptr;
    errno = 0;
    const long value = strtol(text.c_str(), &end, 10);
    if (*end != '\0' || errno != 0 || value < least || value > most)
        return false;
    number = static_cast<int>(value);
    return true;
}

bool ParseEndpoint(const std::string& text, Options& options) {
    const size_t colon = text.rfind(':');
    in_addr address;
    int port = 0;
    if (colon == std::string::npos ||
        inet_pton(AF_INET, text.substr(0, colon).c_str(), &address) != 1 ||
        !ParseNumber(text.substr(colon + 1), 0, UINT16_MAX, port)) {
        return false;
    }
    options.listenIp = text.substr(0, colon);
    options.listenPort = static_cast<uint16_t>(port);
    return true;
}

std::string WithNumber(std::string text, int number) {
    const std::string digits = std::to_string(number);
    for (size_t at = 0; (at = text.find(kNumberMark, at)) != std::string::npos; at += digits.size())
        text.replace(at, strlen(kNumberMark), digits);
    return text;
}

// Why the options exclude each other; empty when they do not.
std::string Conflict(const Options& options) {
    const bool named = options.stateFile.find(kNumberMark) != std::string::npos;
    if (options.count > 1 && !options.stateFile.empty() && !named)
        return "--state needs {n} in its name, as each recorder of --count has a file of its own";
    if (!options.addresses && options.listenPort + options.count - 1 > UINT16_MAX)
        return "--count goes past port 65535; choose another one with --listen IP:PORT";
    return "";
}

struct Option {
    const char* name;
    const char* value; // what it takes, as the help shows it; nullptr for a switch
    const char* help;
    bool (*apply)(Options& options, const std::string& value);
};

const Option kOptions[] = {
    {"--listen", "IP:PORT", "listen there instead of on 127.0.0.1:6000; port 0 picks a free one",
     [](Options& o, const std::string& v) { return ParseEndpoint(v, o); }},
    {"--count", "N", "play N recorders, on consecutive ports; in FILE and VALUE {n} is the number",
     [](Options& o, const std::string& v) { return ParseNumber(v, 1, kMaxCount, o.count); }},
    {"--addresses", nullptr, "with --count: on one port of consecutive addresses instead",
     [](Options& o, const std::string&) { return o.addresses = true; }},
    {"--state", "FILE", "keep the state in FILE, which is made from the sample when missing",
     [](Options& o, const std::string& v) { return !(o.stateFile = v).empty(); }},
    {"--set", "SECTION.ATTR=VALUE", "start with this value (may be repeated)",
     [](Options& o, const std::string& v) { return o.overrides.push_back(v), true; }},
    {"--delay", "MS", "answer MS milliseconds late",
     [](Options& o, const std::string& v) { return ParseNumber(v, 0, kMaxDelayMs, o.delayMs); }},
    {"--drop", "N", "lose every Nth request",
     [](Options& o, const std::string& v) {
         return ParseNumber(v, 1, INT_MAX, o.faults.dropEvery);
     }},
    {"--result", "N", "answer everything with Result=\"N\" and, unless N is 0, apply no set",
     [](Options& o, const std::string& v) {
         return ParseNumber(v, INT_MIN, INT_MAX, o.faults.result);
     }},
    {"--silent", "SECTION", "never answer for this section (may be repeated)",
     [](Options& o, const std::string& v) { return o.faults.silent.push_back(v), !v.empty(); }},
    {"--garbage", nullptr, "answer with texts that are no sound messages, several in turn",
     [](Options& o, const std::string&) { return o.faults.garbage = true; }},
    {"--wrong-port", nullptr, "answer from another port than the one listened on",
     [](Options& o, const std::string&) { return o.wrongPort = true; }},
    {"--verbose", nullptr, "print each datagram",
     [](Options& o, const std::string&) { return o.verbose = true; }},
    {"--help", nullptr, "show this text",
     [](Options& o, const std::string&) { return o.help = true; }},
};

} // namespace

bool ParseOptions(const std::vector<std::string>& arguments, Options& options, std::string& error) {
    for (size_t i = 0; i < arguments.size(); ++i) {
        const size_t equals = arguments[i].find('=');
        const std::string name = arguments[i].substr(0, equals);
        const auto* option = std::find_if(std::begin(kOptions), std::end(kOptions),
                                          [&](const Option& o) { return name == o.name; });
        const bool glued = equals != std::string::npos;
        if (option == std::end(kOptions) || (glued && option->value == nullptr)) {
            error = "unknown option '" + arguments[i] + "'; see --help";
            return false;
        }
        std::string value;
        if (glued) {
            value = arguments[i].substr(equals + 1);
        } else if (option->value != nullptr) {
            if (++i == arguments.size()) {
                error = "option " + name + " needs " + option->value;
                return false;
            }
            value = arguments[i];
        }
        if (!option->apply(options, value)) {
            error = "'" + value;
            error += "' is no value for " + name + ", which takes " + option->value;
            return false;
        }
    }
    error = Conflict(options);
    return error.empty();
}

Options OptionsOf(const Options& options, int number) {
    Options own = options;
    if (!options.addresses) {
        own.listenPort += options.listenPort == 0 ? 0 : number;
    } else {
        in_addr address;
        inet_pton(AF_INET, options.listenIp.c_str(), &address);
        address.s_addr = htonl(ntohl(address.s_addr) + number);
        char text[INET_ADDRSTRLEN];
        own.listenIp = inet_ntop(AF_INET, &address, text, sizeof(text));
    }
    own.stateFile = WithNumber(options.stateFile, number + 1);
    for (std::string& assignment : own.overrides)
        assignment = WithNumber(assignment, number + 1);
    return own;
}

std::string HelpText() {
    std::string text =
        "usage: recorder_sim [OPTION]...\n"
        "\n"
        "Plays the recorder's main application: answers the control messages of webctrl over\n"
        "UDP, keeps what is set, and misbehaves on demand. Ends on SIGINT or SIGTERM.\n"
        "\n";
    for (const Option& option : kOptions) {
        std::string left = std::string("  ") + option.name;
        if (option.value != nullptr)
            left += std::string(" ") + option.value;
        left.resize(std::max<size_t>(left.size() + 1, 29), ' ');
        text += left + option.help + '\n';
    }
    text += "\n"
            "A row is reached as in --set stVideoMirror.stVideoMirrorPara.VChn_0.ucFD_UpDown=1.\n"
            "Result: 1 no message, 2 unknown action, 3 unknown section, 4 unknown attribute or\n"
            "row, 5 state not stored. A set changes what it names, or nothing.\n";
    return text;
}
