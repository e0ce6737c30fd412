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

bool SpecificObjectFactory::BeginRegistration(SharedMutex& mutex) {
    if (registrationCount_ == 0) {
        ShareMutex(&mutex);
        if (!Attach()) {
            ShareMutex(nullptr);
            return false;
        }
    }
    ++registrationCount_;
    return true;
}

void SpecificObjectFactory::ShareMutex(SharedMutex* mutex) {
    if (mutex != nullptr) mutex->AddShare();
    if (mutex_ != nullptr) mutex_->DropShare();
    mutex_ = mutex;
}

}  // namespace ZEMA
