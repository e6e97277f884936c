#pragma once

#include <utility>

// The single owners that the tracing and fitting stages hold their objects through.

namespace ts {

/// Owns one object, or none, and deletes it with itself. Ownership moves; it is never shared.
template <class T>
class auto_ptr {
 public:
    auto_ptr() = default;
    explicit auto_ptr(T* object) noexcept : object_(object) {}
    auto_ptr(auto_ptr&& other) noexcept : object_(other.release()) {}
    template <class U>
    auto_ptr(auto_ptr<U>&& other) noexcept : object_(other.release()) {}
    auto_ptr& operator=(auto_ptr&& other) noexcept {
        auto_ptr::reset(other.release());
        return *this;
    }
    virtual ~auto_ptr() { delete object_; }

    /// Deletes the held object unless it is `object`, then holds `object`.
    virtual void reset(T* object = nullptr) {
        if (object != object_) delete std::exchange(object_, object);
    }

    /// Gives the object away.
    T* release() noexcept { return std::exchange(object_, nullptr); }
    T* get() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    T* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
    T* object_ = nullptr;
};

template <class T, class... Arguments>
auto_ptr<T> make_auto(Arguments&&... arguments) {
    return auto_ptr<T>(new T(std::forward<Arguments>(arguments)...));
}

/// Owns a container of pointers and every object in it.
template <class Container>
class auto_ctr {
 public:
    auto_ctr() = default;
    explicit auto_ctr(Container* container) noexcept : container_(container) {}
    auto_ctr(auto_ctr&& other) noexcept : container_(std::exchange(other.container_, nullptr)) {}
    auto_ctr& operator=(auto_ctr&& other) noexcept {
        auto_ctr::reset(std::exchange(other.container_, nullptr));
        return *this;
    }
    virtual ~auto_ctr() { DeleteAll(); }

    /// Deletes the held container with its objects unless it is `container`, then holds `container`.
    virtual void reset(Container* container = nullptr) {
        if (container == container_) return;
        DeleteAll();
        container_ = container;
    }

    Container* get() const noexcept { return container_; }
    Container& operator*() const noexcept { return *container_; }
    Container* operator->() const noexcept { return container_; }

 private:
    void DeleteAll() noexcept {
        if (container_ == nullptr) return;
        for (auto* object : *container_) delete object;
        delete container_;
    }

    Container* container_ = nullptr;
};

}  // namespace ts
