#include "registry/SpecificObjectFactory.h"

#include "registry/SharedMutex.h"

namespace ZEMA {

SpecificObjectFactory::~SpecificObjectFactory() {
    ShareMutex(nullptr);
}

bool SpecificObjectFactory::Attach() {
    return true;
}

void SpecificObjectFactory::Detach() {}

bool SpecificObjectFactory::AttachOnce(SharedMutex& mutex) {
    if (mutex_ != nullptr) return true;
    // Shared first: Attach may use what this mutex guards.
    ShareMutex(&mutex);
    try {
        if (Attach()) return true;
    } catch (...) {
        ShareMutex(nullptr);
        throw;
    }
    ShareMutex(nullptr);
    return false;
}

void SpecificObjectFactory::ShareMutex(SharedMutex* mutex) {
    // The new share first: both may be of one mutex, whose last share must not go in between.
    if (mutex != nullptr) mutex->AddShare();
    if (mutex_ != nullptr) mutex_->DropShare();
    mutex_ = mutex;
}

}  // namespace ZEMA
