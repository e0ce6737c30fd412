// Blocks of memory for the contents of members.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace ZEMA {

// As `malloc`, for blocks that are filled from front to back. Large ones ask the system for large pages: the first
// touch of every small page costs more than unpacking into it.
void* MallocBlock(std::size_t size);

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};
using MallocBytes = std::unique_ptr<unsigned char, FreeBlock>;

}  // namespace ZEMA
