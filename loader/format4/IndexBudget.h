// Bounds what the indices in a document may allocate.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "core/BasicArray.h"

namespace ZEMA {

// Thrown where an array would have to grow beyond its budget; an allocation failure with a reason.
class IndexLimitExceeded : public std::bad_alloc {
public:
    const char* what() const noexcept override {
        return "indices in the document ask for more entries than its size allows";
    }
};

// An index that a document writes in ten bytes could ask for an array of 2^32 entries. So the entries that indices add
// share one budget for a whole load: no more of them than the text has bytes, and a fixed number besides.
class IndexBudget {
public:
    explicit IndexBudget(std::uint64_t textLength = 0) : left_(textLength + kAllowance) {}

    // Appends zero entries until `index` is one. Past the budget it throws IndexLimitExceeded and changes nothing.
    template <class T>
    void GrowToHold(BasicArray<T>& entries, std::uint32_t index) {
        const std::size_t size = std::size_t{index} + 1;
        if (size <= entries.Size()) return;
        Take(size - entries.Size());
        entries.Resize(size);
    }

private:
    static constexpr std::uint64_t kAllowance = 65536;
    static_assert(sizeof(std::size_t) > sizeof(std::uint32_t), "the largest index and one more must fit");

    void Take(std::uint64_t count) {
        if (count > left_) throw IndexLimitExceeded();
        left_ -= count;
    }

    std::uint64_t left_;
};

}  // namespace ZEMA
