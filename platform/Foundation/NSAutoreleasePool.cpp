#include "platform/Foundation/NSAutoreleasePool.h"

#include <vector>

namespace Foundation {
namespace {

// All that the pools of one thread own, the innermost pool's last.
class PoolStack {
public:
    using Releaser = void (*)(const void*);

    ~PoolStack() { ReleaseDownTo(0); }

    std::size_t Size() const { return entries_.size(); }
    void Push(const void* object, Releaser release) { entries_.push_back({object, release}); }

    // One at a time, off the stack first: releasing an object may push others.
    void ReleaseDownTo(std::size_t size) noexcept {
        while (entries_.size() > size) {
            const Entry last = entries_.back();
            entries_.pop_back();
            last.release(last.object);
        }
    }

private:
    // An object that is let go with the pool, and how.
    struct Entry {
        const void* object;
        Releaser release;
    };

    std::vector<Entry> entries_;
};

PoolStack& ThreadStack() {
    thread_local PoolStack stack;
    return stack;
}

}  // namespace

NSAutoreleasePool::NSAutoreleasePool() : start_(ThreadStack().Size()) {}

NSAutoreleasePool::~NSAutoreleasePool() {
    drain();
}

void NSAutoreleasePool::drain() noexcept {
    ThreadStack().ReleaseDownTo(start_);
}

void NSAutoreleasePool::AddObject(const void* object, Releaser release) {
    try {
        ThreadStack().Push(object, release);
    } catch (...) {
        release(object);
        throw;
    }
}

}  // namespace Foundation
