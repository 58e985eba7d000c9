// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/FileFun.h"

#include "CBB/Util/TimeFun.h"
#include "tests/unit/Unit.h"

TEST(FileFun, WholeFiles) {
    const std::string path = testing::TempDir() + "filefun" + std::to_string(getpid());
    const char* file = path.c_str();
    size_t size = 0;
    char text[32] = {};
    EXPECT_EQ(6, WriteWholeFile("longer", 6, file));
    EXPECT_EQ(6, FileSize(file));
    EXPECT_EQ(0, ReplaceContentFile(file, "new"));
    const std::string before = FormatTimeText(time(nullptr), nullptr);
    EXPECT_EQ("--------------strFile, data:more, size:4.\n",
              Capture([file] { AppendTimestampedText(file, "more"); }).out);
    EXPECT_EQ(0, ReadWholeFile(text, 28, &size, file));
    EXPECT_EQ(FileSize(file), static_cast<int64_t>(size));
    std::replace(text, text + size, '/', '-');
    const std::string after = FormatTimeText(time(nullptr), nullptr), found = text;
    const std::string& then = found.substr(6, 17) == before.substr(2) ? before : after;
    EXPECT_EQ(found, "new\r\n[" + then.substr(2) + "]:mor");
    WriteWholeFile("x", -1, file);
    EXPECT_EQ(0, FileSize(file));
    unlink(file);
    const auto fail = [&text] {
        EXPECT_EQ(-2, ReplaceContentFile("/", "x") + WriteWholeFile("xy", 2, "/"));
        EXPECT_EQ(-2, WriteWholeFile("xy", 2, "/dev/full") + ReadWholeFile(text, 8, nullptr, "/"));
        EXPECT_EQ(-1, ReadWholeFile(text, 8, nullptr, "/none"));
    };
    EXPECT_EQ("ReplaceContentFile, fopen [/] failed.\nerr while open file, fullpath=/\n"
              "err while write file, fullpath=/dev/full, rc=0, except=2\nread file error\n",
              Capture(fail).out);
}
