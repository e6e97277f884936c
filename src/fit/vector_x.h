#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <memory>

/// A small resizable numeric array. Its storage grows to powers of two and never shrinks.
template <class T>
class CFVectorX {
 public:
    CFVectorX() = default;
    explicit CFVectorX(std::size_t size) { Resize(size); }
    virtual ~CFVectorX() = default;

    /// Makes it `size` zeros.
    void Resize(std::size_t size) {
        if (size > capacity_) {
            capacity_ = std::bit_ceil(size);
            elements_ = std::make_unique<T[]>(capacity_);
        }
        size_ = size;
        std::fill_n(elements_.get(), size, T{});
    }

    std::size_t Size() const { return size_; }
    T& operator[](std::size_t i) { return elements_[i]; }
    const T& operator[](std::size_t i) const { return elements_[i]; }

 private:
    std::size_t size_ = 0, capacity_ = 0;
    std::unique_ptr<T[]> elements_;
};
