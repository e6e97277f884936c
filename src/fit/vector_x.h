#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <memory>

/// A small resizable numeric array. Its storage grows to powers of two and never shrinks; a few elements need none beside
/// the array itself.
template <class T>
class CFVectorX {
 public:
    CFVectorX() = default;
    explicit CFVectorX(std::size_t size) { Resize(size); }
    CFVectorX(const CFVectorX&) = delete;
    CFVectorX& operator=(const CFVectorX&) = delete;
    virtual ~CFVectorX() = default;

    /// Makes it `size` zeros.
    void Resize(std::size_t size) {
        if (size > capacity_) {
            capacity_ = std::bit_ceil(size);
            storage_ = std::make_unique<T[]>(capacity_);
            elements_ = storage_.get();
        }
        size_ = size;
        std::fill_n(elements_, size, T{});
    }

    std::size_t Size() const { return size_; }
    T& operator[](std::size_t i) { return elements_[i]; }
    const T& operator[](std::size_t i) const { return elements_[i]; }

 private:
    static constexpr std::size_t kFew = 16;

    T few_[kFew];
    T* elements_ = few_;
    std::size_t size_ = 0, capacity_ = kFew;
    std::unique_ptr<T[]> storage_;
};
