#include "fit/pool.h"

#include <new>

#include "base/of_thread.h"

namespace {

constexpr std::size_t kGrain = 32;      // bytes; sizes are rounded up to multiples of it
constexpr std::size_t kLargest = 1024;  // bytes; larger blocks are not kept

struct FreeBlock {
    FreeBlock* next;
};

/// The blocks of one thread that were given back, by size.
struct FreeLists {
    ~FreeLists() {
        for (FreeBlock*& first : lists) {
            while (first != nullptr) {
                FreeBlock* next = first->next;
                ::operator delete(first);
                first = next;
            }
        }
    }

    FreeBlock* lists[kLargest / kGrain + 1] = {};
};

constexpr std::size_t GrainsOf(std::size_t bytes) { return (bytes + kGrain - 1) / kGrain; }

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kKeepsBlocks = false;
#elif defined(__has_feature)
constexpr bool kKeepsBlocks = !__has_feature(address_sanitizer);
#else
constexpr bool kKeepsBlocks = true;
#endif

}  // namespace

void* CFPool::Take(std::size_t bytes) {
    if (!kKeepsBlocks || bytes > kLargest) return ::operator new(bytes);
    FreeBlock*& first = OfThread<FreeLists>().lists[GrainsOf(bytes)];
    if (first == nullptr) return ::operator new(GrainsOf(bytes) * kGrain);
    FreeBlock* block = first;
    first = block->next;
    __builtin_prefetch(first);  // long lists have left the cache when they are met again
    return block;
}

void CFPool::GiveBack(void* block, std::size_t bytes) noexcept {
    if (!kKeepsBlocks || bytes > kLargest) return ::operator delete(block);
    FreeBlock*& first = OfThread<FreeLists>().lists[GrainsOf(bytes)];
    first = new (block) FreeBlock{first};
}
