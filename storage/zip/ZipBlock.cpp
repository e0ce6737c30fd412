#include "storage/zip/ZipBlock.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

#include <cstdint>

namespace ZEMA {

namespace {

// Below this, less would be saved than the last page, touched as a whole, may waste.
constexpr std::size_t kLargeBlock = std::size_t{8} << 20;

#ifdef __linux__
void AskForLargePages(void* block, std::size_t size) {
    constexpr std::uintptr_t pageSize = 4096;
    const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(block) + pageSize - 1) / pageSize * pageSize;
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(block) + size) / pageSize * pageSize;
    // Advice: a system that does not follow it, or has other pages, gives small ones.
    static_cast<void>(madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE));
}
#else
void AskForLargePages(void*, std::size_t) {}
#endif

}  // namespace

void* MallocBlock(std::size_t size) {
    void* block = std::malloc(size);
    if (block != nullptr && size >= kLargeBlock) AskForLargePages(block, size);
    return block;
}

}  // namespace ZEMA
