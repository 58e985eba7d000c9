// SPDX-License-Identifier: GPL-2.0-only
#pragma once

struct mg_str;

// Whether a path, exactly as it is, leads to an exchange with the recorder.
bool AsksRecorder(const mg_str& path);
