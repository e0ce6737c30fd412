// Reference counts, equality and hashes of all objects.
#include "platform/CoreFoundation/CFRuntime.h"

#include <unistd.h>

namespace ZEMA::CF {
namespace {

const Class kPlainClass = {nullptr, nullptr, nullptr};

const Class& ClassOf(const Object& object) {
    switch (object.type) {
        case Type::String:
            return kStringClass;
        case Type::Array:
            return kArrayClass;
        case Type::Dictionary:
            return kDictionaryClass;
        case Type::Number:
            return kNumberClass;
        case Type::UUID:
            return kUUIDClass;
        case Type::CharacterSet:
            return kCharacterSetClass;
        case Type::Boolean:
        case Type::NumberFormatter:
            return kPlainClass;
    }
    std::abort();
}

const Object& ObjectAt(CFTypeRef reference) {
    Require(reference != nullptr);
    return *static_cast<const Object*>(reference);
}

std::uint64_t SecretNumber() {
    std::uint64_t number = 0;
    // Without a source of chance, where the system has put the program must do.
    if (getentropy(&number, sizeof(number)) != 0) number = reinterpret_cast<std::uintptr_t>(&number);
    return number;
}

}  // namespace

Hasher::Hasher() {
    static const std::uint64_t secretStart = SecretNumber();
    static const std::uint64_t secretFactor = SecretNumber() | 1;
    state = secretStart;
    factor = secretFactor;
}

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

CFTypeRef CFRetain(CFTypeRef object) {
    const Object& target = ObjectAt(object);
    if (!(target.references.load(std::memory_order_relaxed) & kConstantBit)) {
        target.references.fetch_add(1, std::memory_order_relaxed);
    }
    return object;
}

void CFRelease(CFTypeRef object) {
    const Object& target = ObjectAt(object);
    const std::uint32_t count = target.references.load(std::memory_order_acquire);
    if (count & kConstantBit) return;
    if (target.type == Type::UUID) return ReleaseUUID(&target);
    // Whoever holds the only reference is alone with the object: no need to write the count before it goes.
    if (count == 1 || target.references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        ClassOf(target).destroy(&target);
    }
}

CFIndex CFGetRetainCount(CFTypeRef object) {
    const std::uint32_t count = ObjectAt(object).references.load(std::memory_order_relaxed);
    return count & kConstantBit ? kConstantBit : count;
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    return static_cast<CFTypeID>(ObjectAt(object).type);
}

Boolean CFEqual(CFTypeRef object1, CFTypeRef object2) {
    const Object& left = ObjectAt(object1);
    const Object& right = ObjectAt(object2);
    if (&left == &right) return true;
    if (left.type != right.type) return false;
    const Class& kind = ClassOf(left);
    return kind.equal && kind.equal(&left, &right);
}

CFHashCode CFHash(CFTypeRef object) {
    const Object& target = ObjectAt(object);
    const Class& kind = ClassOf(target);
    if (kind.hash) return kind.hash(&target);
    Hasher hasher;
    hasher.Add(reinterpret_cast<std::uintptr_t>(object));
    return hasher.state;
}
