// An allocation that fails, whichever one a test wants. Takes the place of the standard library's operators for the
// whole program and the libraries it loads: included by one source of a program.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

namespace ZEMA::testing {

inline constexpr long kNoAllocationFails = -1;
inline long allocationsLeft = kNoAllocationFails;  // before one fails; one fails, not all that follow

inline void* Allocate(std::size_t size) noexcept {
    if (allocationsLeft != kNoAllocationFails && allocationsLeft-- == 0) return nullptr;
    return std::malloc(size == 0 ? 1 : size);
}

}  // namespace ZEMA::testing

void* operator new(std::size_t size) {
    void* const memory = ZEMA::testing::Allocate(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return ZEMA::testing::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return ZEMA::testing::Allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
