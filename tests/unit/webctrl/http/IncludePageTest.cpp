// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/IncludePage.h"

#include "tests/unit/Unit.h"

TEST(IncludePage, CostsABoundedAmountOfWork) {
    char folder[] = "/tmp/include-page-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string page = folder + std::string("/page.shtml");
    const std::string itself = Repeat(10, "<!--#include file=\"page.shtml\" -->");
    const std::pair<std::string, size_t> cases[] = {
        // a page, and the bytes of it at most
        {"x" + itself, 1001},
        {itself + std::string(30000, 'x'), 1 << 18},
        {std::string(2 << 20, 'x'), 1 << 18},
        {Repeat(1001, "<!--#call setting1 -->"), 6 * 1000}};
    for (const auto& [text, bytes] : cases) {
        std::ofstream(page) << text;
        EXPECT_LE(RenderIncludePage(page, folder).size(), bytes);
    }
    std::filesystem::remove_all(folder);
}
