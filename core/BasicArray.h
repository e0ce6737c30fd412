// The growing array of the system.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

#include "core/MemoryBlocks.h"

namespace ZEMA {

// Elements by value, in the order in which they were pushed.
//
// Growth copies the old elements, then the new one, and only then destroys the old ones, so an element of the array
// itself may be pushed. A failed copy or allocation leaves the array as it was.
//
// What grows may take its block from a MemoryBlocks, which need not live as long as the array does.
//
// Errors: allocation failure is std::bad_alloc; an index out of range is the caller's mistake.
template <class T>
class BasicArray {
public:
    BasicArray() = default;
    BasicArray(const BasicArray& other) {
        Block block(other.Size());
        block.CopyFrom(other.begin_, other.end_);
        Replace(block);
    }
    BasicArray(BasicArray&& other) noexcept { Swap(other); }
    virtual ~BasicArray() {
        Destroy(begin_, end_);
        MemoryBlocks::Free(begin_);
    }

    BasicArray& operator=(const BasicArray& other) {
        if (this != &other) BasicArray(other).Swap(*this);
        return *this;
    }
    BasicArray& operator=(BasicArray&& other) noexcept {
        BasicArray(std::move(other)).Swap(*this);
        return *this;
    }

    std::size_t Size() const { return static_cast<std::size_t>(end_ - begin_); }
    std::size_t Capacity() const { return static_cast<std::size_t>(endOfCapacity_ - begin_); }
    bool Empty() const { return begin_ == end_; }

    T& operator[](std::size_t index) { return begin_[index]; }
    const T& operator[](std::size_t index) const { return begin_[index]; }
    T& Back() { return end_[-1]; }
    const T& Back() const { return end_[-1]; }

    T* begin() { return begin_; }
    T* end() { return end_; }
    const T* begin() const { return begin_; }
    const T* end() const { return end_; }

    // A full block grows to the larger of one and a half times its capacity and four more elements.
    void PushBack(const T& element, MemoryBlocks* blocks = nullptr) { Append(element, blocks); }
    void PushBack(T&& element, MemoryBlocks* blocks = nullptr) { Append(std::move(element), blocks); }

    // Makes room for `capacity` elements in all, exactly; less than the present capacity changes nothing.
    void Reserve(std::size_t capacity, MemoryBlocks* blocks = nullptr) {
        if (capacity <= Capacity()) return;
        Block block(capacity, blocks);
        block.CopyFrom(begin_, end_);
        Replace(block);
    }

    // Drops elements from the end, or appends copies of `filler`. Grows by half at least, so that growing one by one
    // stays linear.
    void Resize(std::size_t size, T filler = T()) {
        while (Size() > size) PopBack();
        if (size > Capacity()) Reserve(Larger(size, Capacity() + Capacity() / 2));
        while (Size() < size) PushBack(filler);
    }

    void PopBack() { (--end_)->~T(); }

    // Destroys the elements and keeps the block.
    void Clear() {
        Destroy(begin_, end_);
        end_ = begin_;
    }

    void Swap(BasicArray& other) noexcept {
        std::swap(begin_, other.begin_);
        std::swap(end_, other.end_);
        std::swap(endOfCapacity_, other.endOfCapacity_);
    }

private:
    // A block under construction: destroys what it holds unless an array takes it over.
    struct Block {
        explicit Block(std::size_t capacity, MemoryBlocks* blocks = nullptr)
            : begin(Allocate(capacity, blocks)), end(begin), endOfCapacity(begin + capacity) {}
        Block(const Block&) = delete;
        Block& operator=(const Block&) = delete;
        ~Block() {
            Destroy(begin, end);
            MemoryBlocks::Free(begin);
        }
        void CopyFrom(const T* first, const T* last) {
            for (; first != last; ++first) Append(*first);
        }
        template <class Element>
        void Append(Element&& element) {
            new (end) T(std::forward<Element>(element));
            ++end;
        }
        T* begin;
        T* end;
        T* endOfCapacity;
    };

    static T* Allocate(std::size_t capacity, MemoryBlocks* blocks) {
        static_assert(alignof(T) <= alignof(void*));
        if (capacity == 0) return nullptr;
        if (capacity > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_alloc();
        return static_cast<T*>(MemoryBlocks::Allocate(capacity * sizeof(T), blocks));
    }
    static void Destroy(T* first, T* last) {
        for (; first != last; ++first) first->~T();
    }
    static std::size_t Larger(std::size_t a, std::size_t b) { return a < b ? b : a; }

    template <class Element>
    void Append(Element&& element, MemoryBlocks* blocks) {
        if (end_ == endOfCapacity_) {
            Block block(Larger(Capacity() + Capacity() / 2, Size() + 4), blocks);
            block.CopyFrom(begin_, end_);
            block.Append(std::forward<Element>(element));
            Replace(block);
        } else {
            new (end_) T(std::forward<Element>(element));
            ++end_;
        }
    }

    // Destroys the old elements after the new block stands.
    void Replace(Block& block) {
        std::swap(begin_, block.begin);
        std::swap(end_, block.end);
        std::swap(endOfCapacity_, block.endOfCapacity);
    }

    T* begin_ = nullptr;
    T* end_ = nullptr;
    T* endOfCapacity_ = nullptr;
};

template <class T>
bool operator==(const BasicArray<T>& a, const BasicArray<T>& b) {
    if (a.Size() != b.Size()) return false;
    for (std::size_t index = 0; index < a.Size(); ++index) {
        if (!(a[index] == b[index])) return false;
    }
    return true;
}

}  // namespace ZEMA
