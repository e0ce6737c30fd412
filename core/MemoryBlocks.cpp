#include "core/MemoryBlocks.h"

#include <algorithm>
#include <utility>

namespace ZEMA {

void MemoryBlocks::StartBlock() {
    char* const memory = static_cast<char*>(::operator new[](nextBlockSize_));
    LeaveBlock();
    block_ = new (memory) Block{1};
    next_ = memory + sizeof(Block);
    end_ = memory + nextBlockSize_;
    nextBlockSize_ = std::min(2 * nextBlockSize_, kLargestBlockSize);
}

void MemoryBlocks::LeaveBlock() {
    if (block_ != nullptr) Drop(std::exchange(block_, nullptr));
}

}  // namespace ZEMA
