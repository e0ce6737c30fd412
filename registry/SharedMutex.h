// A lock that several objects share and that lives as long as any of them needs it.
#pragma once

#include <cstdint>
#include <mutex>

namespace ZEMA {

// A recursive mutex with a count of its shares, on the heap. Whoever drops the last share destroys it, so no holder has
// to outlive the others; a held MutexLock counts as a share.
//
// Threads: the count changes only under the mutex itself.
class SharedMutex {
public:
    SharedMutex(const SharedMutex&) = delete;
    SharedMutex& operator=(const SharedMutex&) = delete;

    // A new mutex; the caller holds the first share.
    static SharedMutex* Create();

    void AddShare();
    void DropShare();

    // For tests and asserts: any other thread may change it the moment after.
    std::int32_t ShareCount();

private:
    friend class MutexLock;

    SharedMutex() = default;
    ~SharedMutex() = default;

    std::recursive_mutex mutex_;
    std::int32_t shareCount_ = 0;
};

// Holds the mutex and a share of it while it stands: what is done under the lock may drop every other share.
class MutexLock {
public:
    explicit MutexLock(SharedMutex& mutex);
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;
    ~MutexLock();

private:
    SharedMutex* mutex_;
};

}  // namespace ZEMA
