// The process's singletons under four-character keys.
#pragma once

#include <mutex>

#include "core/BasicMap.h"
#include "core/Object.h"
#include "core/RefPointer.h"

namespace ZEMA {

class ObjectRegistry;

// Makes an object on first request. Not an Object itself: it lives on the caller's stack, or is static.
class ObjectRegistryInstantiator {
public:
    virtual ~ObjectRegistryInstantiator() = default;

    // A new object, or null when it cannot be made. Called with the registry's lock held.
    virtual RefPointer<Object> Instantiate() = 0;
};

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

// Holds one reference to each object under its key, and makes an object on first request, so that rooms find each
// other's services without knowing each other's classes. Keys are 32 bits wide: big-endian four-character codes.
//
// Exit:    the process's reference goes at exit (or when the module is unloaded), in the reverse order of construction:
//          after the function-local statics made later than the registry, before everything that static initialisation
//          made. So what an object needs in its last release (StorageMutex, the registry of open paths) is a static of
//          namespace scope, or one that is never destroyed; a static made on first use could go before the registry.
//          No static initialiser may call Instance().
// Threads: a recursive mutex guards the entries. Instantiators and observers are called with it held and may use the
//          registry again on that thread.
class ObjectRegistry : public virtual Object {
protected:
    // Drops what is left without telling observers.
    ~ObjectRegistry() override;

public:
    ObjectRegistry();

    // Empties the registry.
    void OnLastRelease() override;

    // The one registry of the process, made on first use by whichever thread comes first. The process keeps it alive
    // until exit.
    static ObjectRegistry* Instance();

    // The object under `key`. When the key is absent, the one that `instantiator` makes, after registering it; null
    // when it makes none or the registration is refused.
    RefPointer<Object> GetOrCreate(unsigned long key, ObjectRegistryInstantiator& instantiator);

    // False when the key is present or `object`, being an ObjectRegistryObserver, refuses. Null may be stored. An
    // object that is refused is not touched.
    [[nodiscard]] bool Register(unsigned long key, Object* object);

    // Removes the objects one by one in ascending order of their keys; an observer is told after its entry is gone.
    // What observers register meanwhile is removed too.
    void RemoveAll();

private:
    void RemoveFirstLocked();

    std::recursive_mutex mutex_;
    BasicMap<unsigned long, RefPointer<Object>> entries_;  // guarded by mutex_
};

}  // namespace ZEMA
