#include "registry/SharedMutex.h"

namespace ZEMA {

SharedMutex* SharedMutex::Create() {
    auto* const mutex = new SharedMutex;
    mutex->AddShare();
    return mutex;
}

void SharedMutex::AddShare() {
    const std::lock_guard lock(mutex_);
    ++shareCount_;
}

void SharedMutex::DropShare() {
    // The lock is let go before the mutex is destroyed: with no share left, nobody can be waiting for it.
    mutex_.lock();
    const bool last = shareCount_-- <= 1;
    mutex_.unlock();
    if (last) delete this;
}

std::int32_t SharedMutex::ShareCount() {
    const std::lock_guard lock(mutex_);
    return shareCount_;
}

MutexLock::MutexLock(SharedMutex& mutex) : mutex_(&mutex) {
    mutex.mutex_.lock();
    ++mutex.shareCount_;
}

MutexLock::~MutexLock() {
    const bool last = mutex_->shareCount_-- < 2;
    mutex_->mutex_.unlock();
    if (last) delete mutex_;
}

}  // namespace ZEMA
