// Creation of objects by type.
#pragma once

#include <typeinfo>

#include "core/BasicMap.h"
#include "core/BasicSet.h"
#include "core/Less.h"
#include "core/Object.h"
#include "core/RefPointer.h"
#include "registry/ObjectRegistry.h"
#include "registry/SharedMutex.h"
#include "registry/SpecificObjectFactory.h"

namespace ZEMA {

// Answers for one abstract type: by concrete type, or by asking its factories one after the other.
//
// They are asked by rank, selective before general, and within a rank in the order of their concrete types' names
// (`type_info::name`, byte by byte). So the order depends neither on where the linker put a type nor on who registered
// first, and a path that is both an archive and a file is always offered to the archive factory first.
//
// Threads: guarded by the lock of the object factory that owns it.
class AbstractObjectFactory : public Object {
protected:
    ~AbstractObjectFactory() override;

public:
    // Takes over one share of `mutex`, unless null.
    explicit AbstractObjectFactory(SharedMutex* mutex = nullptr) : mutex_(mutex) {}

    // A new object with a count of 0, or null. A concrete type is answered by its own factory alone, null included; any
    // other type by the first factory that answers.
    virtual Object* Create(const std::type_info* type, ObjectFactoryArgs* args);

    // False when the concrete type has a factory already.
    [[nodiscard]] bool Add(const std::type_info* concrete, SpecificObjectFactory* factory);

private:
    // A factory with the type that it makes.
    struct Candidate {
        const std::type_info* concrete;
        RefPointer<SpecificObjectFactory> factory;
    };
    // The order in which factories are asked for a type that none makes itself.
    struct AskedBefore {
        bool operator()(const Candidate& a, const Candidate& b) const;
    };

    SharedMutex* mutex_;
    BasicMap<const std::type_info*, RefPointer<SpecificObjectFactory>, TypeInfoLess> byType_;
    BasicMultiset<Candidate, AskedBefore> inAskingOrder_;  // the same factories
};

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
    // When memory runs out the types are as before, and the factory may stay attached.
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

// Makes the object factory when the registry has none.
class ObjectFactoryInstantiator : public ObjectRegistryInstantiator {
public:
    RefPointer<Object> Instantiate() override;
};

}  // namespace ZEMA
