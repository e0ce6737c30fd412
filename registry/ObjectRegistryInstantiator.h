// Makes a registry's object on first request.
#pragma once

#include "core/Object.h"
#include "core/RefPointer.h"

namespace ZEMA {

// Not an Object: it lives on the caller's stack, or is static.
class ObjectRegistryInstantiator {
public:
    virtual ~ObjectRegistryInstantiator() = default;

    // A new object, or null when it cannot be made. Called with the registry's lock held.
    virtual RefPointer<Object> Instantiate() = 0;
};

}  // namespace ZEMA
