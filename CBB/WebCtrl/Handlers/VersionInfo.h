// SPDX-License-Identifier: GPL-2.0-only
#pragma once

class CWebCtrl;
struct VersionPara;

// Queries the version section; `*para` stays as it is on failure. Returns 0 or another value.
int getVersionInfoFromNet(CWebCtrl& controller, VersionPara* para);
