// An object that is told about its own registration.
#pragma once

#include "core/Object.h"

namespace ZEMA {

class ObjectRegistry;

// An object stored in the registry that is also one of these learns when it enters and leaves. Both are called with the
// registry's lock held; neither may keep a reference to the registry, which may be on its way out.
class ObjectRegistryObserver : public virtual Object {
protected:
    ~ObjectRegistryObserver() override = default;

public:
    // Before the entry is made; false refuses the registration.
    virtual bool OnRegister(ObjectRegistry& registry, unsigned long key) = 0;

    // After the entry is gone.
    virtual void OnUnregister(ObjectRegistry& registry, unsigned long key) = 0;
};

}  // namespace ZEMA
