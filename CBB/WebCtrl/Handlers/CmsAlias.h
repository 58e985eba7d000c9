// SPDX-License-Identifier: GPL-2.0-only
#pragma once

class CWebCtrl;

enum CmsAliasDirection {
    CMS_DISPLAY_TO_SERVER = 0,
    CMS_SERVER_TO_DISPLAY = 1,
};

// Translates a central server's address into the one that the page shows for it, or back, by the
// table that the build was configured with (CmsAliasTable.inc). Addresses are compared as text; one
// that stands in no row comes back unchanged.
// @param output 64 bytes; longer inputs are cut
// @return 0 always
int MapCmsAddress(CWebCtrl& controller, int direction, const char* input, char* output);
