#include "bench/peak_memory.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

// One thread measures at a time; counts of other threads may be lost. Without a measurement nothing is counted, so that other
// benchmarks do not pay for it.
bool counts = false;
std::int64_t held = 0, peak = 0;

void* Take(std::size_t size) {
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) throw std::bad_alloc();
    if (counts) {
        held += static_cast<std::int64_t>(malloc_usable_size(block));
        peak = std::max(peak, held);
    }
    return block;
}

void Give(void* block) {
    if (counts && block != nullptr) held -= static_cast<std::int64_t>(malloc_usable_size(block));
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return Take(size); }
void* operator new[](std::size_t size) { return Take(size); }
void operator delete(void* block) noexcept { Give(block); }
void operator delete[](void* block) noexcept { Give(block); }
void operator delete(void* block, std::size_t) noexcept { Give(block); }
void operator delete[](void* block, std::size_t) noexcept { Give(block); }

PeakMemory::PeakMemory() {
    held = peak = 0;
    counts = true;
}
PeakMemory::~PeakMemory() { counts = false; }
std::int64_t PeakMemory::Bytes() const { return peak; }
