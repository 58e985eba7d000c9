// SPDX-License-Identifier: GPL-2.0-only
// What every program here allocates with.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

namespace {

struct Held {
    unsigned char* block;
    size_t size;
};

bool IsWhole(const Held& held, unsigned char filling) {
    return reinterpret_cast<uintptr_t>(held.block) % alignof(std::max_align_t) == 0 &&
           std::all_of(held.block, held.block + held.size,
                       [&](unsigned char byte) { return byte == filling; });
}

// More of each size than a thread keeps.
std::vector<Held> Take() {
    std::vector<Held> all;
    for (size_t i = 0; i < 150 * 50; ++i) {
        const size_t size = i % 150;
        all.push_back({static_cast<unsigned char*>(operator new(size)), size});
        memset(all.back().block, static_cast<int>(i % 251), size);
    }
    return all;
}

// In another order than they were taken, and in both ways.
void GiveBack(const std::vector<Held>& all) {
    for (size_t i = 0; i < all.size(); ++i) {
        const size_t at = (i * 7) % all.size();
        ASSERT_TRUE(IsWhole(all[at], at % 251)) << all[at].size;
        if (i % 3 == 0)
            operator delete(all[at].block);
        else
            operator delete(all[at].block, all[at].size);
    }
}

TEST(SmallBlocks, AreEachOnesOwnWhicheverThreadGivesThemBack) {
    for (int round = 0; round < 3; ++round) {
        GiveBack(Take());
        std::vector<Held> all = Take();
        std::thread([&] {
            GiveBack(all);
            all = Take();
        }).join();
        GiveBack(all);
    }
    operator delete (nullptr, size_t{1});
}

} // namespace
