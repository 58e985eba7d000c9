// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <cstdint>

// The MD5 message digest of RFC 1321.
struct Md5Context {
    uint32_t state[4];
    uint64_t bytes;    // taken so far
    uint8_t block[64]; // the begun block: its first bytes % 64
};

void Md5Init(Md5Context* context);
void Md5Update(Md5Context* context, const void* data, size_t length);

// Writes the digest; the context then has to be initialised anew.
void Md5Final(Md5Context* context, uint8_t digest[16]);
