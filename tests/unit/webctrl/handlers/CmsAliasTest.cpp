// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Handlers/CmsAlias.h"

#include <gtest/gtest.h>
#include <string>

#include "CBB/WebCtrl/WebCtrl.h"

namespace {

struct Mapping {
    int direction;
    std::string input;
    std::string output;
};

const Mapping kMappings[] = {
#ifdef OTHER_CMS_ALIAS_TABLE
    {CMS_SERVER_TO_DISPLAY, "203.0.113.50", "192.0.2.50"},
    {CMS_SERVER_TO_DISPLAY, "203.0.113.51", "192.0.2.50"},
    {CMS_DISPLAY_TO_SERVER, "192.0.2.50", "203.0.113.50"}, // the first row that fits
    {CMS_SERVER_TO_DISPLAY, "192.0.2.1", "192.0.2.1"},     // of the default table
#else
    {CMS_SERVER_TO_DISPLAY, "192.0.2.1", "198.51.100.1"},
    {CMS_SERVER_TO_DISPLAY, "192.0.2.4", "203.0.113.4"},
    {CMS_DISPLAY_TO_SERVER, "198.51.100.2", "192.0.2.2"},
    {CMS_DISPLAY_TO_SERVER, "203.0.113.3", "192.0.2.3"},
    {CMS_DISPLAY_TO_SERVER, "192.0.2.1", "192.0.2.1"}, // a server, not shown under itself
    {CMS_SERVER_TO_DISPLAY, "198.51.100.1", "198.51.100.1"},
#endif
    {CMS_SERVER_TO_DISPLAY, "10.1.2.3", "10.1.2.3"},
    {CMS_DISPLAY_TO_SERVER, "", ""},
    {CMS_DISPLAY_TO_SERVER, std::string(80, 'x'), std::string(63, 'x')},
};

TEST(CmsAlias, MapsBothWaysInRowOrder) {
    CWebCtrl controller;
    for (const Mapping& mapping : kMappings) {
        char output[64];
        EXPECT_EQ(MapCmsAddress(controller, mapping.direction, mapping.input.c_str(), output), 0);
        EXPECT_EQ(output, mapping.output) << mapping.input;
    }
}

} // namespace
