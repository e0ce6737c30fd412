// How many workers there may be, and what each is held to.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "core/Limits.h"

namespace ZEMA {

struct WorkerOptions {
    unsigned jobs = 0;  // 0: one for each processor, as soon as more than a handful of documents wait
    std::chrono::milliseconds timeout = kDocumentTime;  // for a document; 0: as long as it takes
    std::uint64_t memory = kDocumentMemory;             // bytes above what a worker has before its first document
    std::size_t held = kHeldAnswers;                    // bytes of answers that may wait for an earlier one
};

}  // namespace ZEMA
