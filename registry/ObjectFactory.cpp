#include "registry/ObjectFactory.h"

#include "registry/ObjectRegistry.h"

namespace ZEMA {

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
    if (!factory->BeginRegistration(*mutex_)) return false;

    const auto position = abstractFactories_.Find(abstract);
    const RefPointer<AbstractObjectFactory> family =
        position != abstractFactories_.end() ? position->second : New<AbstractObjectFactory>();
    abstractFactories_.Insert(abstract, family);
    abstractFactories_.Insert(concrete, family);
    return family->Add(concrete, factory);
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
