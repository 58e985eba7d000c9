// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"

#include "tests/unit/Unit.h"

static const std::string kHead = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n";

// The bytes that a text becomes; it has exactly its size, so that a read past its end is found.
static std::string Shown(const std::string& text) {
    const std::vector<char> bytes(text.begin(), text.end());
    JsonAnswer answer;
    answer.Chunk("[", bytes.data(), "]", bytes.size());
    const std::string all(answer.Bytes());
    return all.substr(all.find('[') + 1, all.rfind(']') - all.find('[') - 1);
}

TEST(JsonAnswer, EscapesAndMends) {
    EXPECT_EQ(Shown("~\"\\</>&'\x01\x1f\x7f"), "~\\\"\\\\\\u003c/>&'\\u0001\\u001f\\u007f");
    for (const char* good : {"\u00e4\u4f60\U0001f68c", "\xc2\x80\xdf\xbf",
                             "\xe0\xa0\x80\xed\x9f\xbf", "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf"})
        EXPECT_EQ(Shown(good), good);
    // Stray bytes, and what is cut off, overlong, a surrogate or beyond the last character.
    for (const std::string bad :
         {"\x80\xc1\xf5\xff", "\xc2", "\xe4\xbd", "\xf0\x9f\x9a", "\xe0\x9f\xbf",
          "\xf0\x8f\xbf\xbf", "\xed\xa0\x80", "\xf4\x90\x80\x80"}) {
        const std::string mended = Repeat(static_cast<int>(bad.size()), "\\ufffd");
        EXPECT_EQ(Shown(bad), mended);
        EXPECT_EQ(Shown(bad + "<"), mended + "\\u003c");
    }
}

TEST(JsonAnswer, IsOneChunkAMember) {
    struct Block {
        uint8_t u8 = 255;
        uint16_t u16 = 65535;
        uint32_t u32 = 123456;
        char text[4] = {'f', 'u', 'l', 'l'};
        char secret[4] = "key";
    } block;
    const WebField fields[] = {WEB_FIELD(u8), WEB_FIELD_AS(web, u16), WEB_FIELD(u32),
                               WEB_FIELD(text), WEB_SECRET(secret)};
    for (const bool all : {true, false}) {
        JsonAnswer answer(all ? JsonAnswer::For::All : JsonAnswer::For::Reader);
        answer.Members(fields, &block);
        answer.Member("n", -2147483647 - 1);
        answer.Chunk("", 7, "}");
        answer.Chunk("{");
        answer.Member("t", "x");
        answer.Result(all);
        EXPECT_EQ(
            answer.Bytes(),
            kHead + (all ? "" : "Webctrl-Access: read\r\n") +
                "\r\nd\r\n{ \"u8\": \"255\"\r\n10\r\n, \"web\": \"65535\"\r\n"
                "11\r\n, \"u32\": \"123456\"\r\n10\r\n, \"text\": \"full\"\r\n" +
                (all ? "11\r\n, \"secret\": \"key\"" : "e\r\n, \"secret\": \"\"") +
                "\r\n14\r\n, \"n\": \"-2147483648\"\r\n2\r\n7}\r\n1\r\n{\r\na\r\n, \"t\": \"x\"\r\n"
                "f\r\n, \"result\": " +
                (all ? "1" : "0") + " }\r\n0\r\n\r\n");
    }
}

TEST(JsonAnswer, IsWholeOrEmpty) {
    for (const auto& [bytes, size] :
         {std::pair{255, "ff"}, {256, "100"}, {4096, "1000"}, {12202, "2faa"}}) {
        const std::string text(bytes, 'x');
        JsonAnswer answer;
        answer.Chunk(text);
        EXPECT_EQ(answer.Bytes(), kHead + "\r\n" + size + "\r\n" + text + "\r\n");
    }
    JsonAnswer answer;
    answer.Chunk(std::string(12300, 'x'));
    answer.WriteResult(true);
    EXPECT_EQ(answer.Bytes(), "");
}
