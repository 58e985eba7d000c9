// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/BufPool.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kForReading = 0;
constexpr int kForWriting = 1;

uint32_t Advance(uint32_t position, uint32_t n, uint32_t size) {
    return static_cast<uint32_t>((static_cast<uint64_t>(position) + n) % size);
}

} // namespace

CBufPool::CBufPool()
    : m_pBuffer(nullptr), u64Buffersize(0), m_uiWritePos(0), m_uiReadPos(0), u64Busynum(0),
      m_hLock(RwLockCreate()) {}

CBufPool::~CBufPool() {
    free(m_pBuffer);
    RwLockDestroy(m_hLock);
}

int CBufPool::Init(int size) {
    if (size <= 0) {
        printf("parameter invalid, size = %d\n", size);
        return -1;
    }
    RwLockGuard lock(m_hLock, kForWriting);
    const uint32_t bytes = static_cast<uint32_t>(size);
    if (bytes != u64Buffersize) {
        void* storage = std::realloc(m_pBuffer, bytes);
        if (storage == nullptr) {
            printf("malloc failed! linebuffer");
            return -1;
        }
        m_pBuffer = static_cast<uint8_t*>(storage);
        u64Buffersize = bytes;
    }
    memset(m_pBuffer, 0, bytes);
    m_uiWritePos = 0;
    m_uiReadPos = 0;
    u64Busynum = 0;
    return 0;
}

uint32_t CBufPool::Write(const void* data, uint32_t n) {
    RwLockGuard lock(m_hLock, kForWriting);
    if (u64Buffersize <= u64Busynum) {
        fputs("error m_stBufPool.u64Buffersize <= m_stBufPool.u64Busynum\n", stderr);
        u64Busynum = u64Buffersize;
        return 0;
    }
    const uint32_t count = std::min(n, u64Buffersize - u64Busynum);
    const uint32_t untilEnd = std::min(count, u64Buffersize - m_uiWritePos);
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    if (count != 0) {
        memcpy(m_pBuffer + m_uiWritePos, bytes, untilEnd);
        memcpy(m_pBuffer, bytes + untilEnd, count - untilEnd);
    }
    m_uiWritePos = Advance(m_uiWritePos, count, u64Buffersize);
    u64Busynum += count;
    return count;
}

uint32_t CBufPool::Read(void* out, uint32_t n) {
    RwLockGuard lock(m_hLock, kForReading);
    const uint32_t count = CopyOut(static_cast<uint8_t*>(out), n);
    Drop(count);
    return count;
}

uint32_t CBufPool::Peek(void* out, uint32_t n) {
    RwLockGuard lock(m_hLock, kForWriting);
    return CopyOut(static_cast<uint8_t*>(out), n);
}

uint32_t CBufPool::Skip(uint32_t n) {
    RwLockGuard lock(m_hLock, kForWriting);
    const uint32_t count = std::min(n, u64Busynum.load());
    Drop(count);
    return count;
}

uint32_t CBufPool::FreeSpace() {
    RwLockGuard lock(m_hLock, kForReading);
    return u64Buffersize - u64Busynum;
}

uint8_t CBufPool::ReadU8() {
    RwLockGuard lock(m_hLock, kForWriting);
    if (m_pBuffer == nullptr)
        return 0;
    const uint8_t byte = m_pBuffer[m_uiReadPos];
    Drop(1);
    return byte;
}

int16_t CBufPool::ReadU16() {
    return static_cast<int16_t>(TakeLittleEndian(2));
}

uint32_t CBufPool::ReadU32() {
    return TakeLittleEndian(4);
}

// After ReadU8 on an empty ring the count is larger than the ring: the copy then goes round more
// than once, but never past the storage.
uint32_t CBufPool::CopyOut(uint8_t* out, uint32_t n) const {
    const uint32_t count = std::min(n, u64Busynum.load());
    uint32_t position = m_uiReadPos;
    for (uint32_t done = 0; done < count;) {
        const uint32_t chunk = std::min(count - done, u64Buffersize - position);
        memcpy(out + done, m_pBuffer + position, chunk);
        done += chunk;
        position = Advance(position, chunk, u64Buffersize);
    }
    return count;
}

void CBufPool::Drop(uint32_t n) {
    if (n != 0) {
        m_uiReadPos = Advance(m_uiReadPos, n, u64Buffersize);
        u64Busynum -= n;
    }
}

uint32_t CBufPool::TakeLittleEndian(uint32_t bytes) {
    RwLockGuard lock(m_hLock, kForWriting);
    if (u64Busynum < bytes)
        return 0;
    uint8_t taken[sizeof(uint32_t)] = {};
    Drop(CopyOut(taken, bytes));
    return static_cast<uint32_t>(taken[0]) | static_cast<uint32_t>(taken[1]) << 8 |
           static_cast<uint32_t>(taken[2]) << 16 | static_cast<uint32_t>(taken[3]) << 24;
}
