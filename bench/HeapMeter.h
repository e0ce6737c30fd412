// How much memory a piece of work holds at its peak.
#pragma once

#include <cstddef>

namespace bench {

// Bytes held through malloc and its kin by the whole process, what the allocator rounds up to included. Counting is on
// all the time in a program that links this file; it is meant for one thread at work.
void ResetHeapPeak();
std::size_t HeapInUse();
std::size_t HeapPeak();

// The peak above what is held before, while `work` runs.
template <class Work>
std::size_t HeapPeakOf(Work work) {
    const std::size_t before = HeapInUse();
    ResetHeapPeak();
    work();
    return HeapPeak() - before;
}

}  // namespace bench
