// The counted reference to an Object.
#pragma once

#include <concepts>
#include <cstddef>
#include <utility>

#include "core/MemoryBlocks.h"

namespace ZEMA {

// Holds one reference to an Object, or none.
//
// Assigning adds the new reference before it drops the old one, so an object survives being assigned over the reference
// that was its last owner. A null reference must not be dereferenced.
//
// Threads: one RefPointer belongs to one thread at a time; several may hold the same object from several threads.
template <class T>
class RefPointer {
public:
    RefPointer() = default;
    RefPointer(std::nullptr_t) {}
    RefPointer(T* target) : target_(target) { AddRef(); }
    RefPointer(const RefPointer& other) : RefPointer(other.target_) {}
    RefPointer(RefPointer&& other) noexcept : target_(std::exchange(other.target_, nullptr)) {}
    template <class U>
    requires std::convertible_to<U*, T*> RefPointer(const RefPointer<U>& other) : RefPointer(other.Get()) {}
    ~RefPointer() {
        if (target_ != nullptr) target_->Release();
    }

    RefPointer& operator=(const RefPointer& other) {
        Reset(other.target_);
        return *this;
    }
    RefPointer& operator=(RefPointer&& other) noexcept {
        RefPointer(std::move(other)).Swap(*this);
        return *this;
    }

    // Holding `target` already changes nothing.
    void Reset(T* target = nullptr) {
        if (target != target_) RefPointer(target).Swap(*this);
    }

    void Swap(RefPointer& other) noexcept { std::swap(target_, other.target_); }

    T* Get() const { return target_; }
    T* operator->() const { return target_; }
    T& operator*() const { return *target_; }
    explicit operator bool() const { return target_ != nullptr; }

private:
    void AddRef() {
        if (target_ != nullptr) target_->AddRef();
    }

    T* target_ = nullptr;
};

template <class T, class U>
bool operator==(const RefPointer<T>& a, const RefPointer<U>& b) {
    return a.Get() == b.Get();
}

template <class T>
bool operator==(const RefPointer<T>& a, std::nullptr_t) {
    return a.Get() == nullptr;
}

// Makes an object and takes its first reference in one statement.
template <class T, class... Arguments>
RefPointer<T> New(Arguments&&... arguments) {
    return RefPointer<T>(new T(std::forward<Arguments>(arguments)...));
}

// The same, with memory from blocks. The object may outlive them.
template <class T, class... Arguments>
RefPointer<T> NewIn(MemoryBlocks& blocks, Arguments&&... arguments) {
    static_assert(alignof(T) <= alignof(void*));
    return RefPointer<T>(new (&blocks) T(std::forward<Arguments>(arguments)...));
}

}  // namespace ZEMA
