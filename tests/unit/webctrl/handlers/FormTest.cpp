// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/Form.h"

#include "tests/unit/Unit.h"

TEST(Form, ReadsTheFieldN) {
    // A body, the text of its field n in 8 bytes, and whether that is the whole value.
    const std::tuple<std::string, const char*, bool> cases[] = {
        {"a=2&N=1&n=3", "1", true},
        {"an=2&na=3&n=1=2", "1=2", true},
        {"&&n=1&", "1", true},
        {"n&a=2", "", true},
        {"a=n", "", true},
        {"n=a+b%2b%4a%4A", "a b+JJ", true},
        {"n=ab%4", "ab", false},
        {"n=ab%4gc", "ab", false},
        {"n=ab%`4", "ab", false},
        {"n=123456%41", "123456A", true},
        {"n=123456%418", "123456A", false},
        {"n=a%00b", "a", true},
    };
    for (const auto& [body, text, whole] : cases) {
        // Of exactly its size, so that a read past the end is found.
        const std::vector<char> bytes(body.begin(), body.end());
        Form form({bytes.data(), bytes.size()}, 8);
        EXPECT_STREQ(form.Text("n"), text) << body;
        EXPECT_STREQ(form.WholeText("n"), whole ? text : "") << body;
    }
    const std::string body = "n=" + std::string(600, 'x');
    Form form(body);
    EXPECT_EQ(strlen(form.Text("n")), 63U);
    EXPECT_EQ(strlen(form.Text("n", 512)), 511U);
}

TEST(Form, FillsARecord) {
    struct Block {
        uint8_t u8 = 1;
        uint16_t u16 = 1;
        char text[4] = "old";
        uint8_t missing = 1;
    } block;
    const WebField fields[] = {WEB_FIELD(u8), WEB_FIELD(u16), WEB_FIELD(text), WEB_FIELD(missing)};
    Form form("u8=300&u16=70000&text=long&n=-7x&missing=");
    form.Read(fields, &block);
    EXPECT_EQ(std::tuple(block.u8, block.u16, std::string(block.text), block.missing),
              std::tuple(44, 4464, "lon", 1));
    EXPECT_EQ(form.Number("n"), -7);
    EXPECT_EQ(form.Number("none"), 0);
}
