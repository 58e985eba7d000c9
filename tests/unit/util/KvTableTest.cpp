// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/KvTable.h"

#include "tests/unit/Unit.h"

using Texts = std::vector<std::string>;

TEST(KvTable, PutsRemovesDumpsAndListsKeys) {
    // The values that a linker's .hash section holds for these symbols.
    EXPECT_EQ(0x077905a6U, KvHash("printf", 0x7FFFFFFF));
    EXPECT_EQ(0x10fe9fU, KvHash("\xff\xff\xef\xaf", 0x7FFFFFFF)); // bytes, not signed chars
    KvTable* table = KvCreate();
    // "b" + 0x12 and "c" + 0x02 hash alike: one chain.
    for (const char* key : {"b\x12", "a", "c\x02", "b\x12", "~", "\x7f"})
        for (const char* value : {"old", key})
            KvPut(&table->chains[KvHash(key, 4096)], KvNodeCreate(key, value), &table->count);
    EXPECT_EQ("[97]: a=a\n[126]: ~=~\n[127]: \x7f=\x7f\n[1586]: b\x12=b\x12,c\x02=c\x02\n",
              Capture([table] { EXPECT_EQ(0, KvDump(table)); }).out);
    for (const char* key : {"b\x12", "none"})
        KvRemove(&table->chains[1586], key, &table->count);
    uint32_t n = 0;
    uint32_t count = 0;
    const char** keys = KvKeys(table, &n, 1);
    EXPECT_EQ((Texts{"a", "c\x02", "~", "\x7f"}), Texts(keys, keys + n));
    const char** missing = KvKeysNotIn(keys, 3, keys + 2, 2, &count);
    EXPECT_EQ((Texts{"\x7f"}), Texts(missing, missing + count));
    free(keys);
    free(missing);
    EXPECT_EQ(0, KvDestroy(table));
}
