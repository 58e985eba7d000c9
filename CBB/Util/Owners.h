// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <dirent.h>

#include <cstdio>
#include <memory>

// Owners of the C library's streams: closed at the scope's end.
struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
};
using UniqueFile = std::unique_ptr<FILE, FileCloser>;

struct DirCloser {
    void operator()(DIR* dir) const { closedir(dir); }
};
using UniqueDir = std::unique_ptr<DIR, DirCloser>;
