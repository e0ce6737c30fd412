// What all objects of this library have in common. Not for use outside of it.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace ZEMA::CF {

// The types of objects; what CFGetTypeID answers.
enum class Type : std::uint8_t {
    String = 1,
    Array,
    Dictionary,
    Number,
    Boolean,
    UUID,
    CharacterSet,
    NumberFormatter,
};

// A count with this bit belongs to a constant: retaining and releasing leave it alone. One bit, and not one value, so
// that a count which other threads are changing may become a constant's.
inline constexpr std::uint32_t kConstantBit = 0x80000000;

// The start of every object, four bytes smaller than a virtual table pointer and its padding would make it: most
// objects are short texts. `type` takes the place of that pointer.
struct Object {
    constexpr Object(Type objectType, std::uint8_t objectForm, std::uint32_t count = 1)
        : references(count), type(objectType), form(objectForm) {}
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    mutable std::atomic<std::uint32_t> references;
    const Type type;
    const std::uint8_t form;  // a type may have several layouts, which it tells apart by this
    const std::uint16_t unused = 0;
};

// What a type does its own way. Without `equal` only the same object is equal, without `hash` the address is hashed.
struct Class {
    void (*destroy)(const Object* object) noexcept;  // null: all its objects are constants
    bool (*equal)(const Object* object1, const Object* object2);
    CFHashCode (*hash)(const Object* object);
};

extern const Class kStringClass;
extern const Class kArrayClass;
extern const Class kDictionaryClass;
extern const Class kNumberClass;
extern const Class kUUIDClass;
extern const Class kCharacterSetClass;

// Takes one reference of an identifier away under the lock of the table that could hand out another.
void ReleaseUUID(const Object* object);

// A mistake of the caller that must not go on: wrong type, missing object, changing what cannot change.
inline void Require(bool condition) {
    if (!condition) std::abort();
}

template <class T>
const T& Checked(const T* object, Type type) {
    Require(object && object->type == type);
    return *object;
}

template <class T>
T& Checked(T* object, Type type) {
    Require(object && object->type == type);
    return *object;
}

// Gives one reference back.
struct Releaser {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

// Holds one reference for the length of a block.
template <class T>
using Owned = std::unique_ptr<const T, Releaser>;

// One step of a hash over 64-bit words. Keys come from documents, so the start and the steps are secret numbers of this
// run: nobody can prepare many texts that meet in one place of a dictionary.
struct Hasher {
    Hasher();
    void Add(std::uint64_t word) {
        __extension__ using Product = unsigned __int128;
        const Product product = static_cast<Product>(state ^ word) * factor;
        state = static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64) ^ (factor >> 7);
    }

    std::uint64_t state;
    std::uint64_t factor;
};

}  // namespace ZEMA::CF
