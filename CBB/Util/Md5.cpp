// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Md5.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t kBlockSize = 64;
constexpr size_t kLengthAt = 56; // of the bit count in the last block

// floor(2^32 * |sin(i + 1)|)
const uint32_t kSines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

const unsigned int kShifts[4][4] = {
    {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

uint32_t RotateLeft(uint32_t value, unsigned int bits) {
    return value << bits | value >> (32 - bits);
}

// Which bits of the other three words the round mixes in, and which word of the block comes next.
struct Step {
    uint32_t mix;
    unsigned int word;
};

Step StepOf(unsigned int i, uint32_t b, uint32_t c, uint32_t d) {
    switch (i / 16) {
    case 0:
        return {(b & c) | (~b & d), i};
    case 1:
        return {(d & b) | (~d & c), (5 * i + 1) % 16};
    case 2:
        return {b ^ c ^ d, (3 * i + 5) % 16};
    default:
        return {c ^ (b | ~d), 7 * i % 16};
    }
}

void Transform(uint32_t state[4], const uint8_t* block) {
    uint32_t words[16];
    for (size_t i = 0; i < 16; ++i) {
        const uint8_t* p = block + 4 * i;
        words[i] = static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
                   static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
    }
    uint32_t a = state[0];
    uint32_t b = state[1];
    uint32_t c = state[2];
    uint32_t d = state[3];
    for (unsigned int i = 0; i < 64; ++i) {
        const Step step = StepOf(i, b, c, d);
        const uint32_t sum = a + step.mix + words[step.word] + kSines[i];
        a = d;
        d = c;
        c = b;
        b += RotateLeft(sum, kShifts[i / 16][i % 4]);
    }
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
}

void PutLittleEndian(uint8_t* out, uint64_t value, unsigned int bytes) {
    for (unsigned int i = 0; i < bytes; ++i)
        out[i] = static_cast<uint8_t>(value >> (8 * i));
}

} // namespace

void Md5Init(Md5Context* context) {
    *context = {{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476}, 0, {}};
}

void Md5Update(Md5Context* context, const void* data, size_t length) {
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    while (length > 0) {
        const size_t begun = context->bytes % kBlockSize;
        const size_t chunk = std::min(length, kBlockSize - begun);
        memcpy(context->block + begun, bytes, chunk);
        context->bytes += chunk;
        bytes += chunk;
        length -= chunk;
        if (begun + chunk == kBlockSize)
            Transform(context->state, context->block);
    }
}

void Md5Final(Md5Context* context, uint8_t digest[16]) {
    static const uint8_t padding[kBlockSize] = {0x80};
    uint8_t bits[8];
    PutLittleEndian(bits, context->bytes * 8, sizeof(bits));
    const size_t begun = context->bytes % kBlockSize;
    Md5Update(context, padding, (begun < kLengthAt ? kLengthAt : kLengthAt + kBlockSize) - begun);
    Md5Update(context, bits, sizeof(bits));
    for (size_t i = 0; i < 4; ++i)
        PutLittleEndian(digest + 4 * i, context->state[i], 4);
}
