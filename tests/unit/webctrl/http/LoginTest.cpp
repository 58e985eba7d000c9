// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/Login.h"

#include "tests/unit/webctrl/http/Hashes.h"

using Answer = Login::Answer;

static std::string Read(const std::string& header) {
    Credentials credentials;
    return ReadBasic(header, &credentials) ? credentials.text : "none";
}

TEST(Basic, ReadsNameAndPassword) {
    EXPECT_EQ(Read("bASIC  YTpwYXNz"), "a:pass");
    EXPECT_EQ(Read("Basic YTo="), "a:");
    EXPECT_EQ(Credentials{"password"}.Name(), "");
    EXPECT_EQ(Read("Basic w6Q6cMOkc3M6Mg=="), "\xc3\xa4:p\xc3\xa4ss:2");
    EXPECT_NE(Read("Basic YTpw" + std::string(672, 'd')), "none");
    // "apass" has no colon, and "a:pass\0x" a control character.
    for (const std::string& header :
         std::vector<std::string>{"Basic", "Basic ", "Bearer YTpwYXNz",
                                  "Basic YXBhc3M=", "Basic YTpwYXNzAHg=", "Basic YTpw\nYXNz",
                                  "Basic \xff\xff\xff\xff", "Basic YTpw" + std::string(680, 'd')})
        EXPECT_EQ(Read(header), "none") << header;
}

// The steps of one login: each asks at a time, and waits for the hash where one is begun.
struct Steps {
    Answer Ask(const char* text, uint64_t nowMs, uint32_t address = 1) {
        login.ForgetRefused();
        const Answer answer = login.Ask({text}, address, nowMs);
        if (answer != Answer::Wait)
            return answer;
        ++hashes;
        while (!login.HashEnded(nowMs))
            sched_yield();
        return login.Ask({text}, address, nowMs);
    }

    Login login;
    int hashes = 0;
};

TEST(Login, HashesOnceAndOneWrongOneASecond) {
    Steps steps{Login({{"w", BCRYPT, true}, {"r", SHA512, false}, {"\xc3\xa4", YESCRYPT, true}})};
    // Who asks, when, from where; what is answered, and how many hashes were made until then.
    const std::tuple<const char*, uint64_t, uint32_t, Answer, int> cases[] = {
        {"w:pass", 5000, 1, Answer::Write, 1},
        {"r:pass", 5000, 1, Answer::Read, 2}, // right ones do not wait for each other
        {"\xc3\xa4:p\xc3\xa4ss:2", 5000, 1, Answer::Write, 3},
        {"w:pas", 5000, 2, Answer::Refused, 4},
        {"w:pass", 5001, 1, Answer::Write, 4}, // never held up
        {"w:other", 5999, 3, Answer::Later, 4},
        {"nobody:pass", 6000, 3, Answer::Refused, 5},
        {"w:other", 7000, 2, Answer::Refused, 6},
        {"w:other", 8000, 2, Answer::Refused, 7},
        {"w:", 9000, 2, Answer::Refused, 8},
        {"w:", 10999, 2, Answer::Later, 8}, // wrong three times in a row
        {"w:", 11000, 2, Answer::Refused, 9},
        {"w:", 12000, 3, Answer::Refused, 10}, // another one is not held up by that
        {"w:", 13000, 2, Answer::Refused, 11},
        {"w:pass", 13500, 2, Answer::Write, 11}, // begins the row anew
        {"w:", 14000, 2, Answer::Refused, 12},
        {"w:", 15000, 2, Answer::Refused, 13},
        {"w:", 16000, 2, Answer::Refused, 14},
    };
    for (const auto& [text, nowMs, address, answer, hashes] : cases) {
        EXPECT_EQ(steps.Ask(text, nowMs, address), answer) << text << " " << nowMs;
        EXPECT_EQ(steps.hashes, hashes) << text << " " << nowMs;
    }
    EXPECT_TRUE(steps.login.RetryAfter(2, 16999) == 2 && steps.login.RetryAfter(2, 17000) == 1);
}

TEST(Login, WaitsOnlyForItsOwnHash) {
    Login login({{"a", BCRYPT, true}, {"b", BCRYPT, true}});
    EXPECT_EQ(login.Ask({"a:pass"}, 1, 0), Answer::Wait);
    EXPECT_EQ(login.Ask({"a:pass"}, 2, 0), Answer::Wait);
    EXPECT_EQ(login.Ask({"b:pass"}, 2, 0), Answer::Later);
    while (!login.HashEnded(0))
        sched_yield();
    EXPECT_FALSE(login.Hashing());
    EXPECT_EQ(login.Ask({"a:pass"}, 2, 0), Answer::Write);
}

TEST(Login, ForgetsWhoseLineIsChanged) {
    Steps steps{Login({{"a", BCRYPT, true}, {"b", BCRYPT, true}, {"c", BCRYPT, true}})};
    for (const char* text : {"a:pass", "b:pass", "c:pass"})
        EXPECT_EQ(steps.Ask(text, 0), Answer::Write);
    EXPECT_EQ(steps.login.Ask({"d:pass"}, 1, 0), Answer::Wait);
    steps.login.Replace({{"a", BCRYPT, false}, {"b", SHA512, true}, {"d", BCRYPT, true}});
    while (!steps.login.HashEnded(0))
        sched_yield();
    EXPECT_EQ(steps.Ask("a:pass", 0), Answer::Read);
    EXPECT_EQ(steps.hashes, 3);
    EXPECT_EQ(steps.Ask("b:pass", 3000), Answer::Write);
    EXPECT_EQ(steps.Ask("d:pass", 3000), Answer::Write); // what it was hashed for was not its own
    EXPECT_EQ(steps.hashes, 5);
    EXPECT_EQ(steps.Ask("c:pass", 3000), Answer::Refused);
}
