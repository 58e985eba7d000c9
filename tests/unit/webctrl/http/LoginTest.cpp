// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/Login.h"

#include <gtest/gtest.h>
#include <sched.h>

namespace {

// The password of each is "pass" at the cheapest setting; that of the last is "p\u00e4ss:2".
#define BCRYPT "$2b$04$abcdefghijklmnopqrstuufznL8bkzdtHwLhca4To/v9Lo9bA7fR6"
#define SHA512                                                                                     \
    "$6$rounds=1000$salt$NqhXojlgP5NLvJojBnjQD87i66jhb8s3bZord3hSZoIgbCJqUfJdp7pclsLBBqgn02fAtd/"  \
    "vn4lieLeX5J.h90"
#define YESCRYPT "$y$j75$salt....$xSDWJUAL.4fDzM2/p9dE4/ws34Max0HDunmsWLtjo8A"

std::vector<Account> Accounts(const std::string& text) {
    std::vector<Account> accounts;
    EXPECT_EQ(ParseLoginFile(text, &accounts), "");
    return accounts;
}

TEST(LoginFile, IsTakenWholeOrNotAtAll) {
    const struct {
        const char* text;
        const char* fault;
    } cases[] = {
        {"a:" BCRYPT, ""},
        {"a:" BCRYPT "\n\nb c:" SHA512 ":read\n\xc3\xa4:" YESCRYPT "\n", ""},
        {"", "it names nobody"},
        {"\n\n", "it names nobody"},
        {"a:" BCRYPT "\n:" BCRYPT "\n", "line 2: no name"},
        {"a\tb:" BCRYPT, "line 1: no name"},
        {"a:" BCRYPT "\na:" SHA512, "line 2: a name that stands in a line before"},
        {"a:" BCRYPT ":", "line 1: 'read' is all that may stand behind the hash"},
        {"a:" BCRYPT ":write", "line 1: 'read' is all that may stand behind the hash"},
        {"a:" BCRYPT ":read:", "line 1: 'read' is all that may stand behind the hash"},
    };
    for (const auto& each : cases) {
        std::vector<Account> accounts;
        EXPECT_EQ(ParseLoginFile(each.text, &accounts), each.fault) << each.text;
        EXPECT_EQ(accounts.empty(), each.fault[0] != '\0') << each.text;
    }
    for (const std::string hash : {"", "pass", "$1$salt$qJH7.N4xYta3aEG/dfqo/0", "$2b$04$", "*",
                                   BCRYPT "\r", BCRYPT "x", SHA512 "x"}) {
        std::vector<Account> accounts;
        EXPECT_EQ(ParseLoginFile("a:" + hash, &accounts),
                  "line 1: no yescrypt, SHA-512 or bcrypt hash behind the name")
            << hash;
    }
    // Cut by one character, wherever it came from.
    for (const std::string hash : {BCRYPT, SHA512, YESCRYPT}) {
        std::vector<Account> accounts;
        EXPECT_NE(ParseLoginFile("a:" + hash.substr(0, hash.size() - 1), &accounts), "") << hash;
    }
}

TEST(Basic, ReadsNameAndPassword) {
    const struct {
        const char* header;
        const char* text;
    } cases[] = {
        {"Basic YTpwYXNz", "a:pass"},
        {"bASIC  YTpwYXNz", "a:pass"},
        {"Basic YTo=", "a:"},
        {"Basic YTpwOnE=", "a:p:q"},
        {"Basic w6Q6cMOkc3M6Mg==", "\xc3\xa4:p\xc3\xa4ss:2"},
        {"", "none"},
        {"Basic", "none"},
        {"Basic ", "none"},
        {"Bearer YTpwYXNz", "none"},
        {"Basic YXBhc3M=", "none"},     // no colon
        {"Basic YTpwYXNzAHg=", "none"}, // "a:pass\0x"
        {"Basic YTpw\nYXNz", "none"},
        {"Basic \xff\xff\xff\xff", "none"},
    };
    for (const auto& each : cases) {
        Credentials credentials;
        const bool read = ReadBasic(each.header, &credentials);
        EXPECT_EQ(read ? credentials.text : "none", each.text) << each.header;
    }
    Credentials credentials;
    EXPECT_TRUE(ReadBasic("Basic YTpw" + std::string(672, 'd'), &credentials));
    EXPECT_FALSE(ReadBasic("Basic YTpw" + std::string(680, 'd'), &credentials));
}

// The steps of one login: each asks at a time, and waits for the hash where one is begun.
class Steps {
public:
    explicit Steps(const std::string& file) : login(Accounts(file)) {}

    Login::Answer Ask(const char* text, uint64_t nowMs, uint32_t address = 1) {
        login.ForgetRefused();
        const Login::Answer answer = login.Ask({text}, address, nowMs);
        if (answer != Login::Answer::Wait)
            return answer;
        ++hashes;
        while (!login.HashEnded(nowMs))
            sched_yield();
        return login.Ask({text}, address, nowMs);
    }

    Login login;
    int hashes = 0;
};

using Answer = Login::Answer;

TEST(Login, HashesOnceAndOneWrongOneASecond) {
    Steps steps("w:" BCRYPT "\nr:" SHA512 ":read\n\xc3\xa4:" YESCRYPT);
    const struct {
        const char* text;
        uint64_t nowMs;
        uint32_t address;
        Answer answer;
        int hashes;
    } cases[] = {
        {"w:pass", 5000, 1, Answer::Write, 1},
        {"r:pass", 5000, 1, Answer::Read, 2}, // right ones do not wait for each other
        {"\xc3\xa4:p\xc3\xa4ss:2", 5000, 1, Answer::Write, 3},
        {"w:pass", 5000, 1, Answer::Write, 3},
        {"w:pas", 5000, 2, Answer::Refused, 4},
        {"w:pass", 5001, 1, Answer::Write, 4}, // never held up
        {"w:pas", 5001, 2, Answer::Later, 4},
        {"w:other", 5999, 3, Answer::Later, 4},
        {"nobody:pass", 6000, 3, Answer::Refused, 5},
        {"w:other", 7000, 2, Answer::Refused, 6},
        {"w:other", 8000, 2, Answer::Refused, 7},
        {"w:", 9000, 2, Answer::Refused, 8},
        {"w:", 10999, 2, Answer::Later, 8}, // wrong three times in a row
        {"w:", 11000, 2, Answer::Refused, 9},
        {"w:", 12000, 3, Answer::Refused, 10}, // another one is not held up by that
        {"w:", 13000, 2, Answer::Refused, 11},
        {"r:pass", 13000, 2, Answer::Read, 11},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(steps.Ask(each.text, each.nowMs, each.address), each.answer)
            << each.text << " " << each.nowMs;
        EXPECT_EQ(steps.hashes, each.hashes) << each.text << " " << each.nowMs;
    }
    EXPECT_EQ(steps.login.RetryAfter(2, 13000), 1);
}

TEST(Login, WaitsOnlyForItsOwnHash) {
    Login login(Accounts("a:" BCRYPT "\nb:" BCRYPT));
    EXPECT_EQ(login.Ask({"a:pass"}, 1, 0), Answer::Wait);
    EXPECT_EQ(login.Ask({"a:pass"}, 2, 0), Answer::Wait);
    EXPECT_EQ(login.Ask({"b:pass"}, 2, 0), Answer::Later);
    while (!login.HashEnded(0))
        sched_yield();
    EXPECT_FALSE(login.Hashing());
    EXPECT_EQ(login.Ask({"a:pass"}, 2, 0), Answer::Write);
}

TEST(Login, ForgetsWhoseLineIsChanged) {
    Steps steps("a:" BCRYPT "\nb:" BCRYPT "\nc:" BCRYPT);
    for (const char* text : {"a:pass", "b:pass", "c:pass"})
        EXPECT_EQ(steps.Ask(text, 0), Answer::Write);
    EXPECT_EQ(steps.login.Ask({"d:pass"}, 1, 0), Answer::Wait);
    steps.login.Replace(Accounts("a:" BCRYPT ":read\nb:" SHA512 "\nd:" BCRYPT));
    while (!steps.login.HashEnded(0))
        sched_yield();
    EXPECT_EQ(steps.Ask("a:pass", 0), Answer::Read);
    EXPECT_EQ(steps.hashes, 3);
    EXPECT_EQ(steps.Ask("b:pass", 3000), Answer::Write);
    EXPECT_EQ(steps.Ask("d:pass", 3000), Answer::Write); // what it was hashed for was not its own
    EXPECT_EQ(steps.hashes, 5);
    EXPECT_EQ(steps.Ask("c:pass", 3000), Answer::Refused);
}

} // namespace
