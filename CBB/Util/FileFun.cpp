// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/FileFun.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

#include "CBB/Util/Clock.h"
#include "CBB/Util/Owner.h"

int64_t FileSize(const char* path) {
    struct stat info;
    return stat(path, &info) == 0 ? info.st_size : 0;
}

int ReplaceContentFile(const char* path, const char* text) {
    const FilePtr file(fopen(path, "w+"));
    if (file == nullptr) {
        printf("ReplaceContentFile, fopen [%s] failed.\n", path);
        return -1;
    }
    fputs(text, file.get());
    return 0;
}

void AppendTimestampedText(const char* path, const char* text) {
    tm now = {};
    LocalTime(time(nullptr), &now);
    const FilePtr file(fopen(path, "a+b"));
    if (file == nullptr)
        return;
    fprintf(file.get(), "\r\n[%02d/%02d/%02d %02d:%02d:%02d]:", now.tm_year + 1900 - 2000,
            now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec);
    printf("--------------strFile, data:%s, size:%d.\n", text, static_cast<int>(strlen(text)));
    fputs(text, file.get());
}

int ReadWholeFile(void* buffer, size_t capacity, size_t* size, const char* path) {
    const FilePtr file(fopen(path, "rb"));
    if (file == nullptr)
        return -1;
    fseek(file.get(), 0, SEEK_END);
    const size_t bytes = static_cast<size_t>(std::max<off_t>(ftello(file.get()), 0));
    fseek(file.get(), 0, SEEK_SET);
    if (size != nullptr)
        *size = bytes;
    const size_t wanted = std::min(bytes, capacity);
    if (fread(buffer, 1, wanted, file.get()) != wanted) {
        puts("read file error");
        return -1;
    }
    return 0;
}

bool ReadTextFile(const char* path, std::string* text) {
    const FilePtr file(fopen(path, "re"));
    if (file == nullptr)
        return false;
    char block[4096];
    size_t size = 0;
    do {
        size = fread(block, 1, sizeof(block), file.get());
        text->append(block, size);
    } while (size == sizeof(block));
    return true;
}

int WriteWholeFile(const void* buffer, int n, const char* path) {
    const FilePtr file(fopen(path, "wb+"));
    if (file == nullptr) {
        printf("err while open file, fullpath=%s\n", path);
        return -1;
    }
    // Unbuffered, since a full disk would otherwise show at the closing only.
    setvbuf(file.get(), nullptr, _IONBF, 0);
    const size_t wanted = static_cast<size_t>(std::max(n, 0));
    const int written = static_cast<int>(fwrite(buffer, 1, wanted, file.get()));
    if (written < n) {
        printf("err while write file, fullpath=%s, rc=%d, except=%d\n", path, written, n);
        return -1;
    }
    return n;
}
