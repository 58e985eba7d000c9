// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string>

// Whether `text` is one JSON value (RFC 8259) in valid UTF-8 (RFC 3629), made of objects, arrays,
// texts and whole numbers alone.
bool IsJson(const std::string& text);
