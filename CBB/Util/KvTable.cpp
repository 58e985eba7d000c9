// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/KvTable.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr uint32_t kBuckets = 4096;
// More than a pointer on a 32-bit machine, and enough for one on a 64-bit machine: on purpose.
constexpr size_t kBytesPerBucket = 12;
static_assert(kBytesPerBucket >= sizeof(void*), "a bucket holds a pointer");

void FreeNode(KvNode* node) {
    free(node->key);
    free(node->value);
    free(node);
}

// The link that points to the node with this key, or the chain's last, null one.
KvNode** FindLink(KvNode** chain, const char* key) {
    while (*chain != nullptr && strcmp((*chain)->key, key) != 0)
        chain = &(*chain)->next;
    return chain;
}

// Room for n texts; for one at least, since null stands for exhausted memory.
const char** AllocTexts(uint32_t n) {
    return static_cast<const char**>(std::calloc(std::max(n, 1U), sizeof(const char*)));
}

} // namespace

KvTable* KvCreate() {
    KvTable* table = static_cast<KvTable*>(std::calloc(1, sizeof(KvTable)));
    if (table == nullptr)
        return nullptr;
    table->buckets = kBuckets;
    table->chains = static_cast<KvNode**>(std::calloc(kBuckets, kBytesPerBucket));
    if (table->chains == nullptr) {
        free(table);
        return nullptr;
    }
    return table;
}

int KvDestroy(KvTable* table) {
    if (table == nullptr)
        return kKvNullTable;
    for (uint32_t i = 0; i < table->buckets; ++i) {
        while (KvNode* node = table->chains[i]) {
            table->chains[i] = node->next;
            FreeNode(node);
        }
    }
    free(table->chains);
    free(table);
    return 0;
}

KvNode* KvNodeCreate(const char* key, const char* value) {
    KvNode* node = static_cast<KvNode*>(std::calloc(1, sizeof(KvNode)));
    if (node == nullptr)
        return nullptr;
    node->key = strdup(key);
    node->value = strdup(value);
    if (node->key == nullptr || node->value == nullptr) {
        FreeNode(node);
        return nullptr;
    }
    return node;
}

uint32_t KvHash(const char* key, uint32_t buckets) {
    uint32_t hash = 0;
    for (; *key != '\0'; ++key) {
        hash = (hash << 4) + static_cast<unsigned char>(*key);
        const uint32_t top = hash & 0xF0000000U;
        hash ^= top >> 24;
        hash &= ~top;
    }
    return buckets != 0 ? (hash & 0x7FFFFFFFU) % buckets : 0;
}

void KvPut(KvNode** chain, KvNode* node, uint32_t* count) {
    KvNode** link = FindLink(chain, node->key);
    KvNode* old = *link;
    *link = node;
    if (old == nullptr) {
        node->next = nullptr;
        ++*count;
    } else {
        node->next = old->next;
        FreeNode(old);
    }
}

void KvRemove(KvNode** chain, const char* key, uint32_t* count) {
    KvNode** link = FindLink(chain, key);
    KvNode* node = *link;
    if (node != nullptr) {
        *link = node->next;
        FreeNode(node);
        --*count;
    }
}

int KvDump(const KvTable* table) {
    if (table == nullptr)
        return kKvNullTable;
    for (size_t i = 0; i < table->buckets; ++i) {
        const KvNode* node = table->chains[i];
        if (node == nullptr)
            continue;
        printf("[%zd]: ", static_cast<ssize_t>(i));
        for (; node != nullptr; node = node->next)
            printf("%s=%s%s", node->key, node->value, node->next != nullptr ? "," : "\n");
    }
    return 0;
}

const char** KvKeys(const KvTable* table, uint32_t* n, int sorted) {
    *n = table->count;
    const char** keys = AllocTexts(*n);
    if (keys == nullptr)
        return nullptr;
    uint32_t filled = 0;
    for (uint32_t i = 0; i < table->buckets; ++i) {
        for (const KvNode* node = table->chains[i]; node != nullptr && filled < *n;
             node = node->next) {
            keys[filled++] = node->key;
        }
    }
    if (sorted != 0) {
        std::sort(keys, keys + filled,
                  [](const char* a, const char* b) { return strcmp(a, b) < 0; });
    }
    return keys;
}

int KvContains(const char* const* keys, uint32_t n, const char* key) {
    return std::any_of(keys, keys + n, [key](const char* k) { return strcmp(k, key) == 0; }) ? 1
                                                                                             : 0;
}

const char** KvKeysNotIn(const char* const* keys, uint32_t n, const char* const* candidates,
                         uint32_t m, uint32_t* count) {
    *count = 0;
    const char** missing = AllocTexts(m);
    if (missing == nullptr)
        return nullptr;
    for (uint32_t i = 0; i < m; ++i)
        if (KvContains(keys, n, candidates[i]) == 0)
            missing[(*count)++] = candidates[i];
    return missing;
}
