// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Printable.h"

#include "tests/unit/Unit.h"

TEST(Printable, ShowsNoControlCharactersAndNoSecrets) {
    using namespace std::literals;
    EXPECT_EQ(Printable("KEY=a\nb\r\t\x1b[31m\0\x7f\\"sv),
              "KEY=a\\x0ab\\x0d\\x09\\x1b[31m\\x00\\x7f\\");
    EXPECT_EQ(Printable("\xe4\xbd\xa0 \xc3\x9f \xc2\xa0 \x80 \xc2\x9f"),
              "\xe4\xbd\xa0 \xc3\x9f \xc2\xa0 \\x80 \\xc2\\x9f");
    const std::pair<const char*, const char*> masked[] = {
        {"strFD_UserPasswd = 'x\"=y' z\n", "strFD_UserPasswd = '***' z\\x0a"},
        {"<a WPAKEY=x/&=y>", "<a WPAKEY=***>"},
        {"strFD_DevicePass=\"cut off", "strFD_DevicePass=\"***"},
        {"id='=' strFD_Passwd=\"\"", "id='=' strFD_Passwd=\"***\""},
        {"id='a strFD_Passwd=\"' strFD_Passwd=\"x\"", "id='***' strFD_Passwd=\"***\""},
        {"name=\"q\" z='\" strFD_Passwd=\"x\"", "name=\"q\" z='***"},
        {"=", "="},
    };
    for (const auto& [text, shown] : masked) {
        MaskSecrets(true);
        EXPECT_EQ(Printable(text), shown);
        MaskSecrets(false);
        EXPECT_EQ(Printable(text).find("***"), std::string::npos) << text;
    }
}
