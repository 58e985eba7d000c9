// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>

// The console: levelled lines, coloured by the format text that the caller passes. The settings are
// process-wide; any thread may print and set.
enum DebugLevel : int {
    kDebugInfo = 1,
    kDebugError = 3,
    kDebugTrace = 4,
};

#define DEBUG_GREEN "\033[32m\033[1m"
#define DEBUG_RED "\033[31m\033[1m"
#define DEBUG_MAGENTA "\033[35m\033[1m"
#define DEBUG_RESET "\033[0m"

// The format of a line of each level, around the format text of its message, a string literal.
// An error line's first arguments are the class name, the function name and the source line; a
// trace line's are the function name and the source line.
#define DEBUG_INFO_FORMAT(message) DEBUG_GREEN message DEBUG_RESET
#define DEBUG_ERROR_FORMAT(message) DEBUG_RED "[%-16s]<ERROR@%s, L%d>:" message "\n" DEBUG_RESET
#define DEBUG_TRACE_FORMAT(message) DEBUG_MAGENTA "[LOG  ]<@%s, L%d>:" message DEBUG_RESET

// Prints the text with ConsoleWrite, past stdio's buffer, so that lines of different threads do not
// mix. The text is cut at 1023 bytes.
void DebugPrint(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

// True when output of this level is shown: the console is enabled (default: yes) and its minimum
// level (default: 1) is at most level and below 5.
bool DebugIsShown(int level);

// Enables or disables the console; the minimum level becomes 0 or 4.
void DebugSetEnable(uint8_t flag);

// Sets the minimum level; values outside 0 to 4 are ignored.
void DebugSetLevel(int level);
int DebugGetLevel();

// Lowers or raises the minimum level by one within 0 to 5, while the console is enabled, and prints
// "Debug[%d]-enable=%d\n" with the level and the flag in any case. A level of 5 silences
// everything.
void DebugMoreVerbose();
void DebugLessVerbose();
