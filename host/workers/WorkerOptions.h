// How many workers there may be, and what each is held to.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace ZEMA {

struct WorkerOptions {
    unsigned jobs = 0;  // 0: one for each processor, as soon as more than a handful of documents wait
    std::chrono::milliseconds timeout = std::chrono::seconds(60);  // for a document; 0: as long as it takes
    std::uint64_t memory = std::uint64_t{2} << 30;  // bytes above what a worker has before its first document
    std::size_t held = std::size_t{64} << 20;       // bytes of answers that may wait for an earlier one
};

}  // namespace ZEMA
