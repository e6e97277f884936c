#pragma once

#include <cstddef>
#include <list>
#include <new>
#include <utility>
#include <vector>

/// Storage for small blocks. One that is given back is kept for the next of its size and thread: fitting makes and drops its
/// small objects and arrays by the hundred thousand. Under AddressSanitizer nothing is kept, so that it sees every use of a
/// deleted block.
class CFPool {
 public:
    static void* Take(std::size_t bytes);
    static void GiveBack(void* block, std::size_t bytes) noexcept;
};

/// Base of classes whose objects lie in the pool.
class CFPooled {
 public:
    static void* operator new(std::size_t bytes) { return CFPool::Take(bytes); }
    static void operator delete(void* block, std::size_t bytes) noexcept { CFPool::GiveBack(block, bytes); }
};

/// Lets standard containers keep their elements in the pool.
template <class T>
struct CFPoolAllocator {
    using value_type = T;

    CFPoolAllocator() = default;
    template <class U>
    CFPoolAllocator(const CFPoolAllocator<U>&) noexcept {}

    T* allocate(std::size_t count) { return static_cast<T*>(CFPool::Take(count * sizeof(T))); }
    void deallocate(T* block, std::size_t count) noexcept { CFPool::GiveBack(block, count * sizeof(T)); }
    /// Numbers that are given no value are left without one, as most are about to be set.
    template <class U, class... Arguments>
    void construct(U* at, Arguments&&... arguments) {
        if constexpr (sizeof...(arguments) == 0) {
            ::new (static_cast<void*>(at)) U;
        } else {
            ::new (static_cast<void*>(at)) U(std::forward<Arguments>(arguments)...);
        }
    }
    friend bool operator==(CFPoolAllocator, CFPoolAllocator) { return true; }
};

template <class T>
using CFPoolVector = std::vector<T, CFPoolAllocator<T>>;
template <class T>
struct CFPoolList : std::list<T, CFPoolAllocator<T>>, CFPooled {};
