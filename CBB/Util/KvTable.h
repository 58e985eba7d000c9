// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>

// A hash table of key=value texts: chains of heap nodes, without a lock.
struct KvNode {
    char* key; // both texts are on the heap and the node's own
    char* value;
    KvNode* next;
};

struct KvTable {
    uint32_t count;
    uint32_t buckets;
    KvNode** chains; // the first node of each chain, or null
};

constexpr int kKvNullTable = -22; // -EINVAL

// An empty table of 4096 buckets, or null when memory is exhausted.
KvTable* KvCreate();

// Frees the table with its nodes. Returns 0, kKvNullTable for null.
int KvDestroy(KvTable* table);

// A node with copies of both texts, for KvPut; null when memory is exhausted.
KvNode* KvNodeCreate(const char* key, const char* value);

// The ELF hash of the key modulo buckets; 0 when buckets is 0.
uint32_t KvHash(const char* key, uint32_t buckets);

// Hands a node to the chain: it replaces, and frees, the node with an equal key, or is appended at
// the tail and counted. chain is a table's &chains[KvHash(key, buckets)], count its &count.
void KvPut(KvNode** chain, KvNode* node, uint32_t* count);

// Frees the first node with this key and counts it off; without one nothing happens.
void KvRemove(KvNode** chain, const char* key, uint32_t* count);

// Prints "[bucket]: key=value,key=value" for each bucket in use. Returns 0, kKvNullTable for null.
int KvDump(const KvTable* table);

// The keys in bucket and chain order, or in byte order when sorted is not zero; *n is their count.
// The array is freed with std::free, the texts stay the table's. Null when memory is exhausted.
const char** KvKeys(const KvTable* table, uint32_t* n, int sorted);

// 1 when a text equal to key is among the first n keys, else 0.
int KvContains(const char* const* keys, uint32_t n, const char* key);

// Those of the m candidates that are not among the n keys, in their order; *count is their count.
// The array is freed with std::free, the texts are the candidates'. Null when memory is exhausted.
const char** KvKeysNotIn(const char* const* keys, uint32_t n, const char* const* candidates,
                         uint32_t m, uint32_t* count);
