#include "bench/HeapMeter.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>

// The C library's own allocator under its second names; the definitions below take the place of its first ones.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<std::size_t> inUse{0};
std::atomic<std::size_t> peak{0};

void* Taken(void* block) {
    if (block != nullptr) {
        const std::size_t now =
            inUse.fetch_add(malloc_usable_size(block), std::memory_order_relaxed) + malloc_usable_size(block);
        if (now > peak.load(std::memory_order_relaxed)) peak.store(now, std::memory_order_relaxed);
    }
    return block;
}

void GivenBack(void* block) {
    if (block != nullptr) inUse.fetch_sub(malloc_usable_size(block), std::memory_order_relaxed);
}

}  // namespace

extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) {
    return Taken(__libc_malloc(size));
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) {
    return Taken(__libc_calloc(count, size));
}

[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) {
    GivenBack(block);
    void* moved = __libc_realloc(block, size);
    if (moved == nullptr && size != 0) {  // the old block is still there
        Taken(block);
        return nullptr;
    }
    return Taken(moved);
}

[[gnu::visibility("default")]] void* memalign(std::size_t alignment, std::size_t size) {
    return Taken(__libc_memalign(alignment, size));
}

[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Taken(__libc_memalign(alignment, size));
}

[[gnu::visibility("default")]] void free(void* block) {
    GivenBack(block);
    __libc_free(block);
}
}

namespace bench {

void ResetHeapPeak() {
    peak = inUse.load();
}

std::size_t HeapInUse() {
    return inUse;
}

std::size_t HeapPeak() {
    return peak;
}

}  // namespace bench
