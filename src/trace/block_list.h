#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

/// A list of records in blocks: it grows without a copy of what is there, takes no more room than it needs, and gives blocks back
/// one by one. For the records of planar maps, which come by the million.
template <class T>
class RPBlockList {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>, "blocks are raw storage");
    static constexpr int kShift = 10;

    template <class List, class Value>
    class IteratorOf {
     public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = Value*;
        using reference = Value&;

        IteratorOf() = default;
        IteratorOf(List& list, std::size_t place) : list_(&list), place_(place) {}
        Value& operator*() const { return (*list_)[place_]; }
        Value* operator->() const { return &(*list_)[place_]; }
        IteratorOf& operator++() {
            ++place_;
            return *this;
        }
        IteratorOf operator++(int) { return {*list_, place_++}; }
        bool operator==(const IteratorOf&) const = default;

     private:
        List* list_ = nullptr;
        std::size_t place_ = 0;
    };

 public:
    static constexpr std::size_t kBlock = std::size_t{1} << kShift;  // records
    static constexpr std::size_t BlockOf(std::size_t place) { return place >> kShift; }

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    const T& operator[](std::size_t place) const { return blocks_[BlockOf(place)].get()[place & (kBlock - 1)]; }
    T& operator[](std::size_t place) { return blocks_[BlockOf(place)].get()[place & (kBlock - 1)]; }
    const T& back() const { return (*this)[size_ - 1]; }

    auto begin() const { return IteratorOf<const RPBlockList, const T>(*this, 0); }
    auto end() const { return IteratorOf<const RPBlockList, const T>(*this, size_); }
    auto begin() { return IteratorOf<RPBlockList, T>(*this, 0); }
    auto end() { return IteratorOf<RPBlockList, T>(*this, size_); }

    void push_back(const T& record) {
        if (size_ == blocks_.size() * kBlock) AddBlock();
        std::construct_at(&(*this)[size_], record);
        ++size_;
    }
    void clear() {
        blocks_.clear();
        size_ = 0;
    }
    /// Gives a block back: its records are not used again.
    void Release(std::size_t block) { blocks_[block].reset(); }

 private:
    struct Deallocate {
        void operator()(T* block) const { std::allocator<T>().deallocate(block, kBlock); }
    };

    void AddBlock() {
        std::unique_ptr<T, Deallocate> block(std::allocator<T>().allocate(kBlock));  // owned while the list of blocks grows
        blocks_.push_back(std::move(block));
    }

    std::vector<std::unique_ptr<T, Deallocate>> blocks_;
    std::size_t size_ = 0;
};
