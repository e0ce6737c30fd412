// Creation of objects by type.
#pragma once

#include <typeinfo>

#include "core/BasicMap.h"
#include "core/Less.h"
#include "core/Object.h"
#include "core/RefPointer.h"
#include "registry/AbstractObjectFactory.h"
#include "registry/ObjectFactoryArgs.h"
#include "registry/ObjectRegistryInstantiator.h"
#include "registry/SharedMutex.h"
#include "registry/SpecificObjectFactory.h"

namespace ZEMA {

inline constexpr unsigned long kObjectFactoryKey = 0x4F464143;  // 'OFAC'

// Factories of concrete types are registered under an abstract type; a request for the abstract type is answered by the
// first of them that can serve it. So the storage tree opens a path as a directory without knowing which back end will
// answer.
//
// Ownership: keeps the registered factories alive, and shares its mutex with them.
// Threads:   the mutex guards the tables and is held while a factory's Create or Attach runs. It is recursive, so these
//            may use the object factory again.
class ObjectFactory : public Object {
protected:
    ~ObjectFactory() override;

public:
    ObjectFactory();

    // The one under kObjectFactoryKey in the object registry, made when absent; null if something else stands there.
    static RefPointer<ObjectFactory> Instance();

    // Enters `factory` for the concrete type under the abstract one, after attaching it if this is its first
    // registration. False, and nothing changed, when `concrete` is known already (as either kind of type), when either
    // type has a direct factory, or when Attach refuses.
    [[nodiscard]] bool Register(const std::type_info* concrete, SpecificObjectFactory* factory,
                                const std::type_info* abstract);

    // A new object of a concrete type, or of any registered under the abstract type; null when nobody answers. Its
    // count is 0: the caller checks its type and takes it into a RefPointer.
    Object* Create(const std::type_info* type, ObjectFactoryArgs* args);

protected:
    // For subclasses: a factory that is asked for `concrete` before the abstract types are looked at, and keeps that
    // type out of them. False when it has one already.
    [[nodiscard]] bool AddDirect(const std::type_info* concrete, SpecificObjectFactory* factory);

private:
    SharedMutex* mutex_;
    // Maps concrete types as well as abstract ones to the factory of the abstract type.
    BasicMap<const std::type_info*, RefPointer<AbstractObjectFactory>, TypeInfoLess> abstractFactories_;
    BasicMap<const std::type_info*, RefPointer<SpecificObjectFactory>, TypeInfoLess> directFactories_;
};

class ObjectFactoryInstantiator : public ObjectRegistryInstantiator {
public:
    RefPointer<Object> Instantiate() override;
};

}  // namespace ZEMA
