#include "registry/ObjectRegistry.h"

namespace ZEMA {

ObjectRegistry::ObjectRegistry() = default;
ObjectRegistry::~ObjectRegistry() = default;

void ObjectRegistry::OnLastRelease() {
    RemoveAll();
}

ObjectRegistry* ObjectRegistry::Instance() {
    // The standard library constructs it once even when several threads come first, and destroys it at exit.
    static const RefPointer<ObjectRegistry> instance = New<ObjectRegistry>();
    return instance.Get();
}

RefPointer<Object> ObjectRegistry::GetOrCreate(unsigned long key, ObjectRegistryInstantiator& instantiator) {
    const std::lock_guard lock(mutex_);
    const auto position = entries_.Find(key);
    if (position != entries_.end()) return position->second;
    RefPointer<Object> object = instantiator.Instantiate();
    if (!object || !Register(key, object.Get())) return nullptr;
    return object;
}

bool ObjectRegistry::Register(unsigned long key, Object* object) {
    const std::lock_guard lock(mutex_);
    if (entries_.Contains(key)) return false;
    auto* const observer = dynamic_cast<ObjectRegistryObserver*>(object);
    if (observer != nullptr && !observer->OnRegister(*this, key)) return false;
    // Looked at again, since the observer may have entered another object under the key. Not left to Insert: the
    // reference that it is given would be the only one, and its end that of the refused object.
    return !entries_.Contains(key) && entries_.Insert(key, object);
}

void ObjectRegistry::RemoveAll() {
    const std::lock_guard lock(mutex_);
    // One at a time: an observer may enter or remove others meanwhile.
    while (!entries_.Empty()) RemoveFirstLocked();
}

void ObjectRegistry::RemoveFirstLocked() {
    const auto first = entries_.begin();
    const unsigned long key = first->first;
    const RefPointer<Object> object = first->second;  // an observer is told after its entry is gone, and must be alive
    entries_.Erase(first);
    auto* const observer = dynamic_cast<ObjectRegistryObserver*>(object.Get());
    if (observer != nullptr) observer->OnUnregister(*this, key);
}

}  // namespace ZEMA
