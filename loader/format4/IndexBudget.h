// Bounds what the indices in a document may allocate.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "core/BasicArray.h"
#include "core/Limits.h"

namespace ZEMA {

// Thrown where an array would have to grow beyond its budget; an allocation failure with a reason.
class IndexLimitExceeded : public std::bad_alloc {
public:
    const char* what() const noexcept override {
        return "indices in the document ask for more entries than its size allows";
    }
};

// The entries that indices in a document add share one budget for a whole load.
class IndexBudget {
public:
    explicit IndexBudget(std::uint64_t textLength = 0) : left_(textLength + kIndexAllowance) {}

    // Appends zero entries until `index` is one. Past the budget it throws IndexLimitExceeded and changes nothing.
    template <class T>
    void GrowToHold(BasicArray<T>& entries, std::uint32_t index) {
        const std::size_t size = std::size_t{index} + 1;
        if (size <= entries.Size()) return;
        Take(size - entries.Size());
        entries.Resize(size);
    }

private:
    static_assert(sizeof(std::size_t) > sizeof(std::uint32_t), "the largest index and one more must fit");

    void Take(std::uint64_t count) {
        if (count > left_) throw IndexLimitExceeded();
        left_ -= count;
    }

    std::uint64_t left_;
};

}  // namespace ZEMA
