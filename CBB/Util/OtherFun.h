// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// The device's housekeeping, all of it.
#include "CBB/Util/FileFun.h"
#include "CBB/Util/SystemControl.h"
#include "CBB/Util/TextFun.h"
#include "CBB/Util/TimeFun.h"
