// The double-ended queue of the system.
#pragma once

#include <cstddef>
#include <deque>
#include <utility>

namespace ZEMA {

// A face over the standard library's deque, which stores its elements in blocks of 512 bytes: pushing moves no element,
// so references to elements stay valid.
template <class T>
class BasicDeque {
public:
    BasicDeque() = default;
    BasicDeque(const BasicDeque&) = default;
    // May allocate: the other one keeps a table of blocks.
    BasicDeque(BasicDeque&&) = default;  // NOLINT(performance-noexcept-move-constructor)
    BasicDeque& operator=(const BasicDeque&) = default;
    BasicDeque& operator=(BasicDeque&&) noexcept = default;
    virtual ~BasicDeque() = default;

    void PushBack(const T& element) { blocks_.push_back(element); }
    void PushBack(T&& element) { blocks_.push_back(std::move(element)); }
    void PopBack() { blocks_.pop_back(); }
    T& Back() { return blocks_.back(); }
    const T& Back() const { return blocks_.back(); }

    std::size_t Size() const { return blocks_.size(); }
    bool Empty() const { return blocks_.empty(); }

    auto begin() { return blocks_.begin(); }
    auto end() { return blocks_.end(); }
    auto begin() const { return blocks_.begin(); }
    auto end() const { return blocks_.end(); }

private:
    std::deque<T> blocks_;
};

}  // namespace ZEMA
