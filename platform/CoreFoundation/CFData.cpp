#include <CoreFoundation/CFData.h>

#include <cstring>
#include <new>
#include <span>

#include "platform/CoreFoundation/CFRuntime.h"

// One block: this header, then the bytes.
struct __CFData : ZEMA::CF::Object {
    explicit __CFData(std::size_t byteCount) : Object(ZEMA::CF::Type::Data, 0), size(byteCount) {}
    std::span<const UInt8> Bytes() const { return {reinterpret_cast<const UInt8*>(this + 1), size}; }

    std::size_t size;
};

namespace ZEMA::CF {
namespace {

std::span<const UInt8> BytesOf(const Object* object) {
    return static_cast<const __CFData*>(object)->Bytes();
}

void Destroy(const Object* object) noexcept {
    ::operator delete(const_cast<Object*>(object));
}

bool Equal(const Object* object1, const Object* object2) {
    const auto left = BytesOf(object1);
    const auto right = BytesOf(object2);
    return left.size() == right.size() && std::memcmp(left.data(), right.data(), left.size()) == 0;
}

CFHashCode Hash(const Object* object) {
    Hasher hasher;
    for (const UInt8 byte : BytesOf(object)) hasher.Add(byte);
    return hasher.state;
}

}  // namespace

const Class kDataClass = {Destroy, Equal, Hash};

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

CFTypeID CFDataGetTypeID() {
    return static_cast<CFTypeID>(Type::Data);
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
    Require(length >= 0);
    const auto size = static_cast<std::size_t>(length);
    void* block = ::operator new(sizeof(__CFData) + size);
    const auto* data = new (block) __CFData(size);
    if (size > 0) std::memcpy(static_cast<std::byte*>(block) + sizeof(__CFData), bytes, size);
    return data;
}

CFIndex CFDataGetLength(CFDataRef data) {
    return static_cast<CFIndex>(Checked(data, Type::Data).size);
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
    return Checked(data, Type::Data).Bytes().data();
}
