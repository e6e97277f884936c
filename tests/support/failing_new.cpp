// Replaces the program's allocation functions by ones that fail when a test has armed an allocation fault.

#include <cstdlib>
#include <new>

#include "refhost/services/faults.h"

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return refhost::AllocationFails() ? nullptr : std::malloc(size == 0 ? 1 : size);
}
void* operator new(std::size_t size) {
    void* block = operator new(size, std::nothrow);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }

// A sanitizer's own array forms would not come through the above.
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }
