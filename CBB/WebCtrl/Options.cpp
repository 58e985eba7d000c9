// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Options.h"

#include <arpa/inet.h>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>

#include "CBB/WebCtrl/Http/Tls.h"

namespace {

// CWebCtrl keeps the path in 128 bytes.
constexpr size_t kMaxWebRoot = 127;

constexpr uint16_t kHttpPort = 80;
constexpr uint16_t kHttpsPort = 443;

constexpr char kNameCharacters[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-.";

constexpr char kHelp[] =
    "Usage: webctrl [OPTION]...\n"
    "Web front of an in-vehicle video recorder: serves its page and its settings over HTTP.\n"
    "\n"
    "  --port N            TCP port to serve on (80)\n"
    "  --recorder IP:PORT  where the recorder's main application listens, UDP (127.0.0.1:6000)\n"
    "  --web-root DIR      folder of the page (web_root beside the executable)\n"
    "  --allow-host NAME   domain name under which browsers may use the API too; repeatable\n"
    "  --mask-secrets      show passwords and keys as *** in the lines that it prints\n"
    "  --login FILE        who may log in: NAME:HASH or NAME:HASH:read a line; SIGHUP reads it "
    "again\n"
    "  --tls-cert FILE     certificate, PEM: HTTPS alone, on port 443 unless --port is given\n"
    "  --tls-key FILE      its private key, PEM\n"
    "  --help              print this and end\n"
    "  --version           print the version and end\n";

[[noreturn]] __attribute__((format(printf, 1, 2))) void Refuse(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    fputs("webctrl: ", stderr);
    vfprintf(stderr, format, arguments);
    fputs("; try --help\n", stderr);
    va_end(arguments);
    exit(2);
}

// 1 to 65535, decimal digits only; 0 otherwise.
uint16_t ReadPort(const char* text) {
    if (strlen(text) > 5 || text[strspn(text, "0123456789")] != '\0')
        return 0;
    const long port = strtol(text, nullptr, 10);
    return port <= UINT16_MAX ? static_cast<uint16_t>(port) : 0;
}

void ReadRecorder(const char* text, Options& options) {
    const char* colon = strrchr(text, ':');
    in_addr address;
    if (colon != nullptr) {
        options.recorderIp.assign(text, colon);
        options.recorderPort = ReadPort(colon + 1);
    }
    if (colon == nullptr || options.recorderPort == 0 ||
        inet_pton(AF_INET, options.recorderIp.c_str(), &address) != 1)
        Refuse("--recorder takes IP:PORT, such as 127.0.0.1:6000, not '%s'", text);
}

void ReadWebRoot(const char* text, Options& options) {
    if (text[0] == '\0' || strlen(text) > kMaxWebRoot)
        Refuse("--web-root takes a path of 1 to %zu bytes", kMaxWebRoot);
    // The HTTP library takes a root with `,` or `=` for a list of mounts.
    if (strpbrk(text, ",=") != nullptr)
        Refuse("--web-root cannot take a path with ',' or '=': '%s'", text);
    options.webRoot = text;
}

std::string ReadPath(const char* name, const char* text) {
    if (text[0] == '\0')
        Refuse("%s takes the path of a file", name);
    return text;
}

} // namespace

Options ReadOptions(int argc, char** argv) {
    static const option known[] = {
        {"port", required_argument, nullptr, 'p'},
        {"recorder", required_argument, nullptr, 'r'},
        {"web-root", required_argument, nullptr, 'w'},
        {"allow-host", required_argument, nullptr, 'a'},
        {"mask-secrets", no_argument, nullptr, 'm'},
        {"login", required_argument, nullptr, 'l'},
        {"tls-cert", required_argument, nullptr, 'c'},
        {"tls-key", required_argument, nullptr, 'k'},
        {"help", no_argument, nullptr, 'h'},
        {"version", no_argument, nullptr, 'v'},
        {},
    };
    Options options;
    for (int found, at = 1; (found = getopt_long(argc, argv, "+:", known, nullptr)) != -1;
         at = optind) {
        switch (found) {
        case 'p':
            options.port = ReadPort(optarg);
            if (options.port == 0)
                Refuse("--port takes a number from 1 to 65535, not '%s'", optarg);
            break;
        case 'r':
            ReadRecorder(optarg, options);
            break;
        case 'w':
            ReadWebRoot(optarg, options);
            break;
        case 'a':
            if (optarg[0] == '\0' || optarg[strspn(optarg, kNameCharacters)] != '\0')
                Refuse("--allow-host takes a domain name, not '%s'", optarg);
            options.allowedHosts.emplace_back(optarg);
            break;
        case 'm':
            options.maskSecrets = true;
            break;
        case 'l':
            options.loginFile = ReadPath("--login", optarg);
            break;
        case 'c':
            options.tlsCert = ReadPath("--tls-cert", optarg);
            break;
        case 'k':
            options.tlsKey = ReadPath("--tls-key", optarg);
            break;
        case 'h':
            fputs(kHelp, stdout);
            exit(0);
        case 'v':
            printf("webctrl " WEBCTRL_VERSION "\nTLS: %s\n", TlsLibrary());
            exit(0);
        case ':':
            Refuse("%s needs a value", argv[optind - 1]);
        default:
            Refuse("unknown option '%s'", argv[at]); // of a cluster, such as -p80, all of it
        }
    }
    if (optind < argc)
        Refuse("unexpected '%s'", argv[optind]);
    if (options.tlsCert.empty() != options.tlsKey.empty())
        Refuse("--tls-cert and --tls-key belong together");
    if (options.port == 0)
        options.port = options.tlsCert.empty() ? kHttpPort : kHttpsPort;
    return options;
}
