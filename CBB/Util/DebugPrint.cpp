// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/DebugPrint.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>

#include "CBB/Util/Console.h"

namespace {

constexpr size_t kTextSize = 1024;
constexpr int kSilentLevel = 5;

std::atomic<uint8_t> g_enabled{1};
std::atomic<int> g_minimumLevel{1};

void PrintSettings() {
    printf("Debug[%d]-enable=%d\n", g_minimumLevel.load(), g_enabled.load());
}

} // namespace

bool DebugIsShown(int level) {
    const int minimum = g_minimumLevel;
    return g_enabled != 0 && minimum <= level && minimum < kSilentLevel;
}

void DebugPrint(int level, const char* format, ...) {
    if (!DebugIsShown(level))
        return;
    char text[kTextSize];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    if (length > 0)
        ConsoleWrite({text, std::min(static_cast<size_t>(length), sizeof(text) - 1)});
}

void DebugSetEnable(uint8_t flag) {
    g_enabled = flag;
    g_minimumLevel = flag != 0 ? 0 : kSilentLevel - 1;
}

void DebugSetLevel(int level) {
    if (level >= 0 && level < kSilentLevel)
        g_minimumLevel = level;
}

int DebugGetLevel() {
    return g_minimumLevel;
}

void DebugMoreVerbose() {
    if (g_enabled != 0 && g_minimumLevel > 0)
        --g_minimumLevel;
    PrintSettings();
}

void DebugLessVerbose() {
    if (g_enabled != 0 && g_minimumLevel < kSilentLevel)
        ++g_minimumLevel;
    PrintSettings();
}
