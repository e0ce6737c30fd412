// Scopes that own what is handed out without an owner.
#pragma once

#include <cstddef>
#include <memory>

#include "platform/Foundation/NSObjCRuntime.h"

namespace Foundation {

// Releases, when it goes or is drained, all that was given to the thread's pools since it was made, the latest first.
//
// Pools stand on a stack, one for each thread: they live in scopes, and an object goes to the innermost one. Objects
// given while no pool stands are released when the thread ends. Releasing may give further objects; they go too.
class FOUNDATION_EXPORT NSAutoreleasePool {
public:
    NSAutoreleasePool();
    ~NSAutoreleasePool();
    NSAutoreleasePool(const NSAutoreleasePool&) = delete;
    NSAutoreleasePool& operator=(const NSAutoreleasePool&) = delete;
    static void* operator new(std::size_t) = delete;

    void drain() noexcept;

    // Takes over one reference to the object, or the object itself, and gives it back for use until the pool goes.
    // When memory is short the object is released and std::bad_alloc thrown.
    template <class Ref>
    static Ref autorelease(Ref object) {
        if (object != nullptr) AddObject(static_cast<const void*>(object), &ReleaseReference);
        return object;
    }
    template <class T>
    static T* autorelease(std::unique_ptr<T> object) {
        T* const plain = object.release();
        if (plain != nullptr) AddObject(plain, [](const void* owned) { delete static_cast<const T*>(owned); });
        return plain;
    }

private:
    using Releaser = void (*)(const void*);
    static void AddObject(const void* object, Releaser release);
    static void ReleaseReference(const void* object) { CFRelease(object); }

    std::size_t start_;  // how many objects stood in the thread's outer pools
};

}  // namespace Foundation
