#include "registry/ObjectFactory.h"

#include <cstring>
#include <utility>

namespace ZEMA {

AbstractObjectFactory::~AbstractObjectFactory() {
    if (mutex_ != nullptr) mutex_->DropShare();
}

Object* AbstractObjectFactory::Create(const std::type_info* type, ObjectFactoryArgs* args) {
    const auto position = byType_.Find(type);
    if (position != byType_.end()) return position->second->Create(args);
    // A factory may register further ones while it is asked: positions of the set stay good when something is inserted.
    for (const Candidate& candidate : inAskingOrder_) {
        Object* const object = candidate.factory->Create(args);
        if (object != nullptr) return object;
    }
    return nullptr;
}

bool AbstractObjectFactory::Add(const std::type_info* concrete, SpecificObjectFactory* factory) {
    // Into a copy first: without memory for both tables neither changes.
    auto byType = byType_;
    if (!byType.Insert(concrete, factory)) return false;
    inAskingOrder_.Insert({concrete, factory});
    byType_ = std::move(byType);
    return true;
}

bool AbstractObjectFactory::AskedBefore::operator()(const Candidate& a, const Candidate& b) const {
    if (a.factory->Rank() != b.factory->Rank()) return a.factory->Rank() < b.factory->Rank();
    return std::strcmp(a.concrete->name(), b.concrete->name()) < 0;
}

ObjectFactory::ObjectFactory() : mutex_(SharedMutex::Create()) {}

ObjectFactory::~ObjectFactory() {
    mutex_->DropShare();
}

RefPointer<ObjectFactory> ObjectFactory::Instance() {
    ObjectFactoryInstantiator instantiator;
    const RefPointer<Object> object = ObjectRegistry::Instance()->GetOrCreate(kObjectFactoryKey, instantiator);
    return dynamic_cast<ObjectFactory*>(object.Get());
}

bool ObjectFactory::Register(const std::type_info* concrete, SpecificObjectFactory* factory,
                             const std::type_info* abstract) {
    const MutexLock lock(*mutex_);
    if (directFactories_.Contains(concrete) || abstractFactories_.Contains(concrete)) return false;
    if (directFactories_.Contains(abstract)) return false;
    if (!factory->AttachOnce(*mutex_)) return false;

    const auto position = abstractFactories_.Find(abstract);
    const RefPointer<AbstractObjectFactory> family =
        position != abstractFactories_.end() ? position->second : New<AbstractObjectFactory>();
    // Under both, so that a concrete type is known from now on and can be asked for by itself. Into a copy: without
    // memory for all entries none is made, since a type that is known but not served could never be registered again.
    auto changed = abstractFactories_;
    changed.Insert(abstract, family);
    changed.Insert(concrete, family);
    if (!family->Add(concrete, factory)) return false;
    abstractFactories_ = std::move(changed);
    ++factory->registrationCount_;
    return true;
}

Object* ObjectFactory::Create(const std::type_info* type, ObjectFactoryArgs* args) {
    // The references below keep alive whoever is asked, and the lock keeps the mutex: a factory's Create may let go of
    // the object factory, by emptying the registry.
    const MutexLock lock(*mutex_);
    const auto direct = directFactories_.Find(type);
    if (direct != directFactories_.end()) {
        const RefPointer<SpecificObjectFactory> factory = direct->second;
        return factory->Create(args);
    }
    const auto position = abstractFactories_.Find(type);
    if (position == abstractFactories_.end()) return nullptr;
    const RefPointer<AbstractObjectFactory> family = position->second;
    return family->Create(type, args);
}

bool ObjectFactory::AddDirect(const std::type_info* concrete, SpecificObjectFactory* factory) {
    const MutexLock lock(*mutex_);
    return directFactories_.Insert(concrete, factory);
}

RefPointer<Object> ObjectFactoryInstantiator::Instantiate() {
    return New<ObjectFactory>();
}

}  // namespace ZEMA
