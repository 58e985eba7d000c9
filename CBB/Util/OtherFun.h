// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// Includes all of the device's housekeeping.
#include "CBB/Util/FileFun.h"
#include "CBB/Util/SystemControl.h"
#include "CBB/Util/TextFun.h"
#include "CBB/Util/TimeFun.h"
