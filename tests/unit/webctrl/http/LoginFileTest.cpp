// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/LoginFile.h"

#include "tests/unit/webctrl/http/Hashes.h"

TEST(LoginFile, IsTakenWholeOrNotAtAll) {
    const std::string none = "line 1: no yescrypt, SHA-512 or bcrypt hash behind the name";
    const std::string more = "line 1: 'read' is all that may stand behind the hash";
    std::vector<std::pair<std::string, std::string>> cases = {
        {"a:" BCRYPT "\n\nb c:" SHA512 ":read\n\xc3\xa4:" YESCRYPT "\n", ""},
        {"a:$2a$" BCRYPT_REST "\nb:$2y$" BCRYPT_REST, ""},
        {"a:" BCRYPT "\n:" BCRYPT "\n", "line 2: no name"},
        {"a\tb:" BCRYPT, "line 1: no name"},
        {"a:" BCRYPT "\na:" SHA512, "line 2: a name that stands in a line before"},
        {"a:" BCRYPT ":", more},
        {"a:" BCRYPT ":read:", more},
    };
    for (const char* hash : {"", "pass", "$1$salt$qJH7.N4xYta3aEG/dfqo/0", "$2b$04$", "*",
                             BCRYPT "\r", BCRYPT "x", SHA512 "x"})
        cases.emplace_back("a:" + std::string(hash), none);
    for (const std::string hash : {BCRYPT, SHA512, YESCRYPT})
        cases.emplace_back("a:" + hash.substr(0, hash.size() - 1), none);
    for (const auto& [text, fault] : cases) {
        std::vector<Account> accounts;
        EXPECT_EQ(ParseLoginFile(text, &accounts), fault) << text;
        EXPECT_EQ(accounts.empty(), !fault.empty()) << text;
    }
}

TEST(LoginFile, IsAFileThatOthersCannotRead) {
    const std::string path = testing::TempDir() + "login" + std::to_string(getpid());
    const std::string line = "a:" BCRYPT "\n", lines(64 * 1024 - line.size(), '\n');
    const std::tuple<std::string, mode_t, const char*> cases[] = {
        {"", 0600, "it names nobody"},
        {line + lines, 0660, ""},
        {line + lines + "\n", 0600, "it is larger than 64 KiB"},
        {line, 0604, "others may read or write it; chmod o= mends that"},
        {line, 0602, "others may read or write it; chmod o= mends that"}};
    std::vector<Account> accounts;
    for (const auto& [text, mode, fault] : cases) {
        std::ofstream(path) << text;
        chmod(path.c_str(), mode);
        EXPECT_EQ(ReadLoginFile(path, &accounts), fault) << mode;
    }
    unlink(path.c_str());
    EXPECT_EQ(ReadLoginFile(path, &accounts), "No such file or directory");
    mkfifo(path.c_str(), 0600);
    EXPECT_EQ(ReadLoginFile(path, &accounts), "it is no regular file");
    unlink(path.c_str());
    EXPECT_EQ(ReadLoginFile("/proc/self/mem", &accounts), "Input/output error");
}
