// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Whole files. Failures print a line on standard output.

// The size in bytes, 0 when stat(2) fails.
int64_t FileSize(const char* path);

// Makes the text the file's content. Returns 0, or -1 when the file cannot be opened.
int ReplaceContentFile(const char* path, const char* text);

// Appends "\r\n[YY/MM/DD hh:mm:ss]:" (local time) and the text; does nothing when the file cannot
// be opened.
void AppendTimestampedText(const char* path, const char* text);

// Reads the file's first bytes, at most capacity, into buffer. The whole file's size goes to *size
// unless size is null, also when that is more than was read. Returns 0, or -1 when the file cannot
// be opened or read.
int ReadWholeFile(void* buffer, size_t capacity, size_t* size, const char* path);

// Appends the file's bytes to *text; for the kernel's files, too, which tell no size. False, with
// errno set, when it cannot be opened.
bool ReadTextFile(const char* path, std::string* text);

// Makes n bytes the file's content. Returns n, or -1 when the file cannot be opened or takes fewer.
int WriteWholeFile(const void* buffer, int n, const char* path);
