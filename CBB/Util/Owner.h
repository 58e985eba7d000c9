// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdio>
#include <dirent.h>
#include <memory>
#include <unistd.h>

// Closes its descriptor, unless that is -1.
class CDescriptor {
public:
    explicit CDescriptor(int fd) : m_iFd(fd) {}
    ~CDescriptor() {
        if (m_iFd >= 0)
            close(m_iFd);
    }
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;

    int Get() const { return m_iFd; }

private:
    int m_iFd;
};

struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

struct DirCloser {
    void operator()(DIR* dir) const { closedir(dir); }
};
using DirPtr = std::unique_ptr<DIR, DirCloser>;
