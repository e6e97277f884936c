// Replaces the program's allocation functions by ones that fail when a test has armed an allocation fault, and that count
// bytes when a test wants to know.

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include "refhost/services/faults.h"
#include "tests/support/memory_peak.h"

namespace {

std::atomic<bool> g_counting{false};
std::atomic<std::int64_t> g_held{0}, g_peak{0}, g_limit{0};

std::int64_t BytesOf(void* block) {
#if defined(_WIN32)
    return block == nullptr ? 0 : static_cast<std::int64_t>(_msize(block));
#else
    return static_cast<std::int64_t>(malloc_usable_size(block));
#endif
}

/// False when the block would take the count past the limit.
bool Count(std::int64_t bytes) {
    const std::int64_t held = g_held += bytes;
    for (std::int64_t peak = g_peak; peak < held && !g_peak.compare_exchange_weak(peak, held);) {
    }
    if (held <= g_limit) return true;
    g_held -= bytes;
    return false;
}

void* Allocate(std::size_t size) noexcept {
    if (refhost::AllocationFails()) return nullptr;
    const bool counting = g_counting.load(std::memory_order_relaxed);
    const auto bytes = static_cast<std::int64_t>(std::min(size, std::size_t{1} << 50));
    if (counting && !Count(bytes)) return nullptr;
    void* block = std::malloc(size == 0 ? 1 : size);
    if (counting) g_held += block == nullptr ? -bytes : BytesOf(block) - bytes;
    return block;
}

void Free(void* block) noexcept {
    if (g_counting.load(std::memory_order_relaxed)) g_held -= BytesOf(block);
    std::free(block);
}

}  // namespace

std::int64_t support::MemoryPeakOf(const std::function<void()>& work, std::int64_t limit) {
    g_held = g_peak = 0;
    g_limit = limit;
    g_counting = true;
    work();
    g_counting = false;
    return g_peak;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new(std::size_t size) {
    void* block = operator new(size, std::nothrow);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t) noexcept { Free(block); }

void operator delete(void* block, const std::nothrow_t&) noexcept { Free(block); }

// A sanitizer's own array forms would not come through the above.
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }
