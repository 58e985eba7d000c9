// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string>
#include <string_view>

// A text from outside as it may be printed: its control characters as \xNN, so that it makes no
// line of its own and gives a terminal no command. Other bytes stay, UTF-8 text with them.
std::string Printable(std::string_view text);
// True only if Printable would return the text unchanged.
bool IsPrintable(std::string_view text);

// Whether Printable also shows `***` for the value of each attribute whose name tells of a password
// or key, and for a value that seems to hold such an attribute. Off unless set, which is to be done
// before there is another thread.
void MaskSecrets(bool masked);
