// The root of every class that is shared between owners.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "core/MemoryBlocks.h"

namespace ZEMA {

// An object with a reference count of its own, destroyed by whoever takes the last reference away.
//
// A new object has a count of 0: its creator takes it into a RefPointer in the same statement (see New). Objects live
// on the heap only, so destructors of subclasses are protected.
//
// Threads: the count alone may be changed from several threads at once.
class Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

protected:
    Object() = default;
    virtual ~Object() = default;

public:
    // From the heap, or from blocks (see NewIn).
    static void* operator new(std::size_t size) { return MemoryBlocks::Allocate(size, nullptr); }
    static void* operator new(std::size_t size, MemoryBlocks* blocks) { return MemoryBlocks::Allocate(size, blocks); }
    static void operator delete(void* object) { MemoryBlocks::Free(object); }
    static void operator delete(void* object, MemoryBlocks*) { MemoryBlocks::Free(object); }

    // Called once, on the thread that dropped the last reference, just before the destructor. A class detaches itself
    // from shared structures here; it must neither throw nor hand out a new reference to itself.
    virtual void OnLastRelease();

    virtual void AddRef();

    // Destroys the object when the count drops to 0.
    virtual void Release();

    // A snapshot, for tests and for owners that know that nobody else can reach the object.
    std::int32_t ReferenceCount() const { return referenceCount.load(std::memory_order_acquire); }

private:
    std::atomic<std::int32_t> referenceCount{0};
};

}  // namespace ZEMA
