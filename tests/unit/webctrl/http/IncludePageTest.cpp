// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/IncludePage.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

TEST(IncludePage, CostsABoundedAmountOfWork) {
    char folder[] = "/tmp/include-page-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string page = folder + std::string("/page.shtml");
    std::string tags;
    for (int i = 0; i < 10; ++i)
        tags += "<!--#include file=\"page.shtml\" -->";
    std::string settings;
    for (int i = 0; i < 1001; ++i)
        settings += "<!--#call setting1 -->";
    const struct {
        std::string text;
        size_t bytes; // of the page at most
    } cases[] = {
        {tags, 0},
        {tags + std::string(30000, 'x'), 1 << 20},
        {std::string(2 << 20, 'x'), 1 << 20},
        {settings, 6 * 1000},
    };
    for (const auto& each : cases) {
        std::ofstream(page) << each.text;
        const clock_t start = clock();
        EXPECT_LE(RenderIncludePage(page, folder).size(), each.bytes);
        EXPECT_LT(clock() - start, CLOCKS_PER_SEC / 2);
    }
    std::filesystem::remove_all(folder);
}

} // namespace
