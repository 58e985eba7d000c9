// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <atomic>
#include <cstdint>

#include "CBB/Util/Lock.h"

// A byte ring of fixed size, shared between threads. Counts and results are bytes.
class CBufPool {
public:
    CBufPool();
    ~CBufPool();
    CBufPool(const CBufPool&) = delete;
    CBufPool& operator=(const CBufPool&) = delete;

    // Makes the ring size bytes large, cleared and empty. Returns 0, or -1 when size is 0 or less
    // or memory is exhausted; the ring is then as before.
    int Init(int size);

    // Appends what fits of n bytes and returns how many that were. A full ring says so on standard
    // error and returns 0.
    uint32_t Write(const void* data, uint32_t n);

    // Each takes, copies or drops at most n bytes from the ring's start and returns how many. Read
    // holds the lock for reading only: two readers at a time may get the same bytes.
    uint32_t Read(void* out, uint32_t n);
    uint32_t Peek(void* out, uint32_t n);
    uint32_t Skip(uint32_t n);

    uint32_t FreeSpace();

    // Takes one byte without looking whether there is one: an empty ring gives a stale byte, and
    // its byte count falls below 0 (to 2^32 - 1) until the next Write. 0 before the first Init.
    uint8_t ReadU8();

    // Take little-endian integers, 0 when the ring holds fewer bytes.
    int16_t ReadU16();
    uint32_t ReadU32();

private:
    uint32_t CopyOut(uint8_t* out, uint32_t n) const;
    void Drop(uint32_t n);
    uint32_t TakeLittleEndian(uint32_t bytes);

    // Counts of 32 bits, whatever their names say. Read moves the last two under a shared lock,
    // hence atomic; the positions stay below the size whatever two readers do to each other.
    uint8_t* m_pBuffer;
    uint32_t u64Buffersize;
    uint32_t m_uiWritePos;
    std::atomic<uint32_t> m_uiReadPos;
    std::atomic<uint32_t> u64Busynum;
    RwLockHandle m_hLock;
};
