// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>

// Prints "<HEX:label>(length)-[xx xx ]" and a newline, when the console shows this level (see
// DebugIsShown) and label, data and length are not null.
void HexDump(int level, const char* label, const void* data, uint32_t length);
