// The factory of one concrete type.
#pragma once

#include <cstdint>

#include "core/Object.h"
#include "registry/ObjectFactoryArgs.h"

namespace ZEMA {

class SharedMutex;

// Which factories of an abstract type are asked first: those that answer only for what they recognise (an archive)
// before those that answer for anything of a general kind (whatever the file system holds). A property of the factory,
// because the addresses that order the tables by type change from build to build.
enum class FactoryRank : std::uint32_t { Selective = 0, General = 1 };

// Makes objects of a concrete type that is registered with the ObjectFactory under an abstract one.
//
// Ownership: a share of the object factory's mutex, from the first registration on. It does not keep the object factory
//            alive.
// Threads:   Create, Attach and Detach run with that mutex held, when called through the object factory.
class SpecificObjectFactory : public Object {
protected:
    explicit SpecificObjectFactory(FactoryRank rank = FactoryRank::General) : rank_(rank) {}
    ~SpecificObjectFactory() override;

public:
    // A new object with a count of 0, which the caller owns, or null when this factory cannot serve `args`.
    virtual Object* Create(ObjectFactoryArgs* args) = 0;

    // Called once, on the first registration; false makes that registration fail. The base does nothing and succeeds.
    virtual bool Attach();

    // Undoes Attach; called by whoever takes the factory out of use, never by the object factory.
    virtual void Detach();

    FactoryRank Rank() const { return rank_; }
    // How many concrete types it was registered for, over its whole life.
    std::uint32_t RegistrationCount() const { return registrationCount_; }
    // Null until the first registration, and after one that Attach refused.
    SharedMutex* Mutex() const { return mutex_; }

private:
    friend class ObjectFactory;

    // The object factory's side of the first registration. One that fails leaves no share behind.
    bool AttachOnce(SharedMutex& mutex);
    void ShareMutex(SharedMutex* mutex);

    SharedMutex* mutex_ = nullptr;
    std::uint32_t registrationCount_ = 0;
    FactoryRank rank_;
};

}  // namespace ZEMA
