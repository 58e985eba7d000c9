// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/CmsAlias.h"

#include "CBB/WebCtrl/WebCtrl.h"
#include "tests/unit/Unit.h"

TEST(CmsAlias, MapsBothWaysInRowOrder) {
    const std::tuple<int, std::string, std::string> cases[] = {
        {CMS_SERVER_TO_DISPLAY, "203.0.113.50", "192.0.2.50"},
        {CMS_SERVER_TO_DISPLAY, "203.0.113.51", "192.0.2.50"},
        {CMS_DISPLAY_TO_SERVER, "192.0.2.50", "203.0.113.50"}, // the first row that fits
        // The default table, behind those rows.
        {CMS_SERVER_TO_DISPLAY, "192.0.2.1", "198.51.100.1"},
        {CMS_SERVER_TO_DISPLAY, "192.0.2.4", "203.0.113.4"},
        {CMS_DISPLAY_TO_SERVER, "192.0.2.1", "192.0.2.1"}, // a server, not shown under itself
        {CMS_SERVER_TO_DISPLAY, "198.51.100.1", "198.51.100.1"},
        {CMS_DISPLAY_TO_SERVER, std::string(80, 'x'), std::string(63, 'x')},
    };
    CWebCtrl controller;
    for (const auto& [direction, input, output] : cases) {
        char mapped[64];
        EXPECT_EQ(MapCmsAddress(controller, direction, input.c_str(), mapped), 0);
        EXPECT_EQ(mapped, output) << input;
    }
}
