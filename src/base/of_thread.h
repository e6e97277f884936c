#pragma once

#if defined(__MINGW32__)
#include <pthread.h>

#include <memory>
#include <new>

/// Destroys an object of each thread when the thread ends.
class KeptByThread {
 public:
    explicit KeptByThread(void (*destroy)(void*)) {
        if (pthread_key_create(&key_, destroy) != 0) throw std::bad_alloc();
    }
    void Keep(const void* object) const {
        if (pthread_setspecific(key_, object) != 0) throw std::bad_alloc();
    }

 private:
    pthread_key_t key_;
};
#endif

/// The calling thread's own `T`: made at its first use, destroyed when the thread ends.
/// @throws std::bad_alloc, and what T's constructor throws
template <class T>
T& OfThread() {
#if defined(__MINGW32__)
    // GCC for MinGW frees the memory of a thread's variables before it destroys them, so here they live on the heap.
    thread_local T* object = nullptr;
    if (object == nullptr) {
        static const KeptByThread kept([](void* ended) { delete static_cast<T*>(ended); });
        auto made = std::make_unique<T>();
        kept.Keep(made.get());
        object = made.release();
    }
    return *object;
#else
    thread_local T object;
    return object;
#endif
}
