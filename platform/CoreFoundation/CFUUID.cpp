#include <CoreFoundation/CFUUID.h>

#include <array>
#include <bit>
#include <cstring>
#include <map>
#include <mutex>

#include "platform/CoreFoundation/StringObject.h"

namespace ZEMA::CF {

using UUIDBytes = std::array<UInt8, 16>;

}  // namespace ZEMA::CF

// Sixteen bytes in the order in which they are written.
struct __CFUUID : ZEMA::CF::Object {
    explicit __CFUUID(const ZEMA::CF::UUIDBytes& value) : Object(ZEMA::CF::Type::UUID, 0), bytes(value) {}
    const ZEMA::CF::UUIDBytes bytes;
};

namespace ZEMA::CF {
namespace {

// All identifiers that are alive, by value. A count that is about to reach zero is changed under the lock, as is the
// count of one that is handed out once more, so that nobody gets an object that is on its way out. The table itself
// never goes: objects that live until the very end may hold identifiers.
struct Registry {
    std::mutex mutex;
    std::map<UUIDBytes, const __CFUUID*> alive;  // guarded by mutex; holds no references
};
Registry& TheRegistry() {
    static Registry& registry = *new Registry;
    return registry;
}

constexpr std::uint32_t kOneReference = 1;

// `bits` are put on top of the count: one reference, or what makes a constant of it.
const __CFUUID* Unique(const UUIDBytes& bytes, std::uint32_t bits) {
    Registry& registry = TheRegistry();
    const std::scoped_lock lock(registry.mutex);
    const auto [place, isNew] = registry.alive.try_emplace(bytes, nullptr);
    if (isNew) {
        try {
            place->second = new __CFUUID(bytes);
        } catch (...) {
            registry.alive.erase(place);
            throw;
        }
    }
    const __CFUUID* uuid = place->second;
    if (bits & kConstantBit) {
        uuid->references.fetch_or(kConstantBit, std::memory_order_relaxed);
    } else if (!isNew) {
        CFRetain(uuid);
    }
    return uuid;
}

const UUIDBytes& BytesOf(const Object* object) {
    return static_cast<const __CFUUID*>(object)->bytes;
}

// Only the same object is equal, since equal ones are the same.
CFHashCode Hash(const Object* object) {
    const auto words = std::bit_cast<std::array<std::uint64_t, 2>>(BytesOf(object));
    Hasher hasher;
    hasher.Add(words[0]);
    hasher.Add(words[1]);
    return hasher.state;
}

int HexDigit(UniChar unit) {
    if (unit >= '0' && unit <= '9') return unit - '0';
    if (unit >= 'A' && unit <= 'F') return unit - 'A' + 10;
    if (unit >= 'a' && unit <= 'f') return unit - 'a' + 10;
    return -1;
}

// Bytes in each group of the written form.
constexpr std::size_t kGroups[] = {4, 2, 2, 2, 6};

UUIDBytes Parse(TextView text) {
    const auto digitAt = [&](std::size_t index) { return index < text.Length() ? HexDigit(text[index]) : -1; };
    std::size_t position = 0;
    while (position < text.Length() && digitAt(position) < 0) ++position;
    UUIDBytes bytes = {};
    std::size_t index = 0;
    for (const std::size_t byteCount : kGroups) {
        for (std::size_t i = 0; i < byteCount; ++i, position += 2) {
            const int high = digitAt(position);
            const int low = digitAt(position + 1);
            bytes[index++] = high < 0 || low < 0 ? UInt8{0} : static_cast<UInt8>(high * 16 + low);
        }
        ++position;  // what stands between two groups
    }
    return bytes;
}

}  // namespace

const Class kUUIDClass = {nullptr, nullptr, Hash};

void ReleaseUUID(const Object* object) {
    std::uint32_t count = object->references.load(std::memory_order_relaxed);
    while (count > 1) {
        if (count & kConstantBit) return;
        if (object->references.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel)) return;
    }
    Registry& registry = TheRegistry();
    const std::scoped_lock lock(registry.mutex);
    count = object->references.load(std::memory_order_relaxed);
    if (count & kConstantBit || object->references.fetch_sub(1, std::memory_order_acq_rel) > 1) return;
    registry.alive.erase(BytesOf(object));
    delete static_cast<const __CFUUID*>(object);
}

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef, CFUUIDBytes bytes) {
    return Unique(std::bit_cast<UUIDBytes>(bytes), kOneReference);
}

CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef, CFStringRef text) {
    const TextView view = ViewOf(text);
    return view.Length() == 0 ? nullptr : Unique(Parse(view), kOneReference);
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
    return std::bit_cast<CFUUIDBytes>(Checked(uuid, Type::UUID).bytes);
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
                                         UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14,
                                         UInt8 byte15) {
    return Unique({byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7, byte8, byte9, byte10, byte11, byte12, byte13,
                   byte14, byte15},
                  kConstantBit);
}
