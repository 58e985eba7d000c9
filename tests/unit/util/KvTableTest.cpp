// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/KvTable.h"

#include "tests/unit/Unit.h"

using Texts = std::vector<std::string>;

TEST(KvTable, PutsRemovesDumpsAndListsKeys) {
    // The values that a linker's .hash section holds for these symbols.
    EXPECT_EQ(0x05797189U, KvHash("gettimeofday", 0x7FFFFFFF) + KvHash("x", 0));
    EXPECT_EQ(0x10fe9fU, KvHash("\xff\xff\xef\xaf", 0x7FFFFFFF)); // bytes, not signed chars
    EXPECT_EQ(-44, KvDestroy(nullptr) + KvDump(nullptr));
    KvTable* table = KvCreate();
    EXPECT_EQ(4096U, table->buckets);
    // "b" + 0x12 and "c" + 0x02 hash alike: one chain.
    for (const char* key : {"b\x12", "a", "c\x02", "b\x12", "~", ""})
        for (const char* value : {"old", key})
            KvPut(&table->chains[KvHash(key, 4096)], KvNodeCreate(key, value), &table->count);
    EXPECT_EQ("0 [0]: =\n[97]: a=a\n[126]: ~=~\n[1586]: b\x12=b\x12,c\x02=c\x02\n",
              Told([table] { return KvDump(table); }));
    for (const char* key : {"b\x12", "none"})
        KvRemove(&table->chains[1586], key, &table->count);
    uint32_t n = 9, count = 9; // not looked at
    const char** keys = KvKeys(table, &n, 1);
    EXPECT_EQ((Texts{"", "a", "c\x02", "~"}), Texts(keys, keys + n));
    const char** missing = KvKeysNotIn(keys + 1, 3, keys, 2, &count);
    EXPECT_EQ((Texts{""}), Texts(missing, missing + count));
    free(keys);
    free(missing);
    EXPECT_EQ(0, KvDestroy(table));
}
