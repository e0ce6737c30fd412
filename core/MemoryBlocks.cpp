#include "core/MemoryBlocks.h"

#include <utility>

namespace ZEMA {

void MemoryBlocks::StartBlock() {
    char* const memory = static_cast<char*>(::operator new[](kBlockSize));
    LeaveBlock();
    block_ = new (memory) Block{1};
    next_ = memory + sizeof(Block);
    end_ = memory + kBlockSize;
}

void MemoryBlocks::LeaveBlock() {
    if (block_ != nullptr) Drop(std::exchange(block_, nullptr));
}

}  // namespace ZEMA
