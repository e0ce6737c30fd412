// The factories of all concrete types of one abstract type.
#pragma once

#include <typeinfo>

#include "core/BasicMap.h"
#include "core/BasicSet.h"
#include "core/Less.h"
#include "core/Object.h"
#include "core/RefPointer.h"
#include "registry/ObjectFactoryArgs.h"
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
    struct Candidate {
        const std::type_info* concrete;
        RefPointer<SpecificObjectFactory> factory;
    };
    struct AskedBefore {
        bool operator()(const Candidate& a, const Candidate& b) const;
    };

    SharedMutex* mutex_;
    BasicMap<const std::type_info*, RefPointer<SpecificObjectFactory>, TypeInfoLess> byType_;
    BasicMultiset<Candidate, AskedBefore> inAskingOrder_;  // the same factories
};

}  // namespace ZEMA
