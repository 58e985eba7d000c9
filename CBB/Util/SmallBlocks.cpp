// SPDX-License-Identifier: GPL-2.0-only
// The program's operator new and delete. Reading one reply takes some thirty blocks of a few dozen
// bytes and gives them back, and malloc keeps only seven of a size within easy reach. Here each
// thread keeps more, which makes a request cheaper by a tenth. Every block is malloc's, so that any
// of them may go back there.
//
// A sanitizer has its own operators, which see a block used after its end; it is built without this
// file.
#include <cstdlib>
#include <new>
#include <utility>

namespace {

constexpr size_t kGrain = 16;  // what malloc aligns to on the larger of our machines
constexpr size_t kShelves = 9; // of 0 to 8 grains
constexpr int kMaxKept = 32;   // of each size, 18 KiB in all

struct Block {
    Block* next;
};

struct Shelf {
    Block* first;
    int room; // for so many more
};
thread_local Shelf t_shelves[kShelves];

// There is room on a thread's shelves from the first block that it takes until it ends. None on the
// first one, whose blocks have no byte for what a kept one holds.
class Opening {
public:
    Opening() { SetRoom(kMaxKept); }
    ~Opening() {
        for (Shelf& shelf : t_shelves) {
            while (shelf.first != nullptr)
                free(std::exchange(shelf.first, shelf.first->next));
        }
        SetRoom(0);
    }

private:
    static void SetRoom(int room) {
        for (size_t grains = 1; grains < kShelves; ++grains)
            t_shelves[grains].room = room;
    }
};

[[gnu::noinline]] void* Allocate(size_t size) {
    static thread_local const Opening opening;
    void* block = malloc(size > 0 ? size : 1);
    if (block == nullptr)
        throw std::bad_alloc(); // as the language asks of it; nobody here catches it
    return block;
}

} // namespace

void* operator new(size_t size) {
    const size_t grains = (size + kGrain - 1) / kGrain;
    if (grains >= kShelves)
        return Allocate(size);
    Shelf& shelf = t_shelves[grains];
    Block* block = shelf.first;
    if (block == nullptr)
        return Allocate(grains * kGrain);
    shelf.first = block->next;
    ++shelf.room;
    return block;
}

void operator delete(void* block, size_t size) noexcept {
    const size_t grains = (size + kGrain - 1) / kGrain;
    if (block == nullptr || grains >= kShelves)
        return free(block);
    Shelf& shelf = t_shelves[grains];
    if (shelf.room == 0)
        return free(block);
    --shelf.room;
    shelf.first = new (block) Block{shelf.first};
}

void operator delete(void* block) noexcept {
    free(block);
}
