// SPDX-License-Identifier: GPL-2.0-only
#pragma once

class CWebCtrl;

enum CmsAliasDirection {
    CMS_DISPLAY_TO_SERVER = 0,
    CMS_SERVER_TO_DISPLAY = 1,
};

/// Translates between the central servers' addresses and those that the page shows for them, by
/// the table that the build was configured with (CmsAliasTable.inc). A dotted IPv4 text that is in
/// no row, compared as text, comes back unchanged.
/// @param output 64 bytes; longer inputs are cut
/// @return 0 always
int MapCmsAddress(CWebCtrl& controller, int direction, const char* input, char* output);
