#include <CoreFoundation/CFDictionary.h>

#include <algorithm>
#include <bit>
#include <vector>

#include "platform/CoreFoundation/CFRuntime.h"

// Entries lie in the order in which they came; nothing is ever removed. While they are few a search walks over them;
// then a table of slots, found by hash with linear probing and at most half full, says where each one is. The room for
// those few is taken at once, so that adding them to an empty dictionary fails at the first or not at all.
struct __CFDictionary : ZEMA::CF::Object {
    // A key with its hash, which is never asked for twice, and its value; retained as the callbacks say.
    struct Entry {
        CFHashCode hash;
        const void* key;
        const void* value;
    };

    __CFDictionary(const CFDictionaryKeyCallBacks* keys, const CFDictionaryValueCallBacks* values)
        : Object(ZEMA::CF::Type::Dictionary, 0),
          keyCallBacks(keys ? *keys : CFDictionaryKeyCallBacks{}),
          valueCallBacks(values ? *values : CFDictionaryValueCallBacks{}) {}

    CFHashCode HashOf(const void* key) const;
    bool Holds(const Entry& entry, CFHashCode hash, const void* key) const;
    const Entry* Find(CFHashCode hash, const void* key) const;  // null: absent
    const Entry* Find(const void* key) const { return Find(HashOf(key), key); }
    void Add(CFHashCode hash, const void* key, const void* value);  // absent until now
    void Replace(Entry& entry, const void* key, const void* value);

    const void* Retained(const void* key) const;
    const void* RetainedValue(const void* value) const;
    void ReleaseEntry(const Entry& entry) const;

    std::size_t FirstSlot(CFHashCode hash) const;
    void FillSlot(std::size_t entryIndex);
    void MakeRoom();  // for one more entry

    static constexpr std::size_t kCountWithoutSlots = 8;

    const CFDictionaryKeyCallBacks keyCallBacks;
    const CFDictionaryValueCallBacks valueCallBacks;
    std::vector<Entry> entries;
    std::vector<std::uint32_t> slots;  // index of an entry plus 1, or 0; a power of two, or none
};

CFHashCode __CFDictionary::HashOf(const void* key) const {
    if (keyCallBacks.hash) return keyCallBacks.hash(key);
    ZEMA::CF::Hasher hasher;
    hasher.Add(reinterpret_cast<std::uintptr_t>(key));
    return hasher.state;
}

bool __CFDictionary::Holds(const Entry& entry, CFHashCode hash, const void* key) const {
    return entry.hash == hash && (entry.key == key || (keyCallBacks.equal && keyCallBacks.equal(entry.key, key)));
}

const __CFDictionary::Entry* __CFDictionary::Find(CFHashCode hash, const void* key) const {
    if (slots.empty()) {
        const auto found = std::ranges::find_if(entries, [&](const Entry& entry) { return Holds(entry, hash, key); });
        return found == entries.end() ? nullptr : &*found;
    }
    for (std::size_t slot = FirstSlot(hash); slots[slot] != 0; slot = (slot + 1) & (slots.size() - 1)) {
        const Entry& entry = entries[slots[slot] - 1];
        if (Holds(entry, hash, key)) return &entry;
    }
    return nullptr;
}

void __CFDictionary::Add(CFHashCode hash, const void* key, const void* value) {
    MakeRoom();
    entries.push_back({hash, Retained(key), RetainedValue(value)});
    if (!slots.empty()) FillSlot(entries.size() - 1);
}

void __CFDictionary::Replace(Entry& entry, const void* key, const void* value) {
    const Entry old = entry;
    entry = {old.hash, Retained(key), RetainedValue(value)};
    ReleaseEntry(old);
}

const void* __CFDictionary::Retained(const void* key) const {
    return keyCallBacks.retain ? keyCallBacks.retain(kCFAllocatorDefault, key) : key;
}

const void* __CFDictionary::RetainedValue(const void* value) const {
    return valueCallBacks.retain ? valueCallBacks.retain(kCFAllocatorDefault, value) : value;
}

void __CFDictionary::ReleaseEntry(const Entry& entry) const {
    if (keyCallBacks.release) keyCallBacks.release(kCFAllocatorDefault, entry.key);
    if (valueCallBacks.release) valueCallBacks.release(kCFAllocatorDefault, entry.value);
}

// The hashes may be any numbers of the caller's, so their upper bits must not be all alike or all different.
std::size_t __CFDictionary::FirstSlot(CFHashCode hash) const {
    constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;
    return (hash * kGoldenRatio) >> (64 - std::countr_zero(slots.size()));
}

void __CFDictionary::FillSlot(std::size_t entryIndex) {
    std::size_t slot = FirstSlot(entries[entryIndex].hash);
    while (slots[slot] != 0) slot = (slot + 1) & (slots.size() - 1);
    slots[slot] = static_cast<std::uint32_t>(entryIndex + 1);
}

void __CFDictionary::MakeRoom() {
    const std::size_t count = entries.size() + 1;
    if (count > entries.capacity()) entries.reserve(std::max<std::size_t>(kCountWithoutSlots, 2 * entries.size()));
    if (count <= kCountWithoutSlots || 2 * count <= slots.size()) return;
    slots.assign(std::bit_ceil(4 * count), 0);
    for (std::size_t index = 0; index < entries.size(); ++index) FillSlot(index);
}

namespace ZEMA::CF {
namespace {

const void* RetainObject(CFAllocatorRef, const void* object) {
    return CFRetain(object);
}
void ReleaseObject(CFAllocatorRef, const void* object) {
    CFRelease(object);
}

void Destroy(const Object* object) noexcept {
    const auto* dictionary = static_cast<const __CFDictionary*>(object);
    for (const auto& entry : dictionary->entries) dictionary->ReleaseEntry(entry);
    delete dictionary;
}

bool Equal(const Object* object1, const Object* object2) {
    const auto& left = *static_cast<const __CFDictionary*>(object1);
    const auto& right = *static_cast<const __CFDictionary*>(object2);
    if (left.entries.size() != right.entries.size()) return false;
    return std::ranges::all_of(left.entries, [&](const __CFDictionary::Entry& entry) {
        const auto* other = right.Find(entry.key);
        if (!other) return false;
        const auto equal = left.valueCallBacks.equal;
        return entry.value == other->value || (equal && equal(entry.value, other->value));
    });
}

CFHashCode Hash(const Object* object) {
    return static_cast<const __CFDictionary*>(object)->entries.size();
}

}  // namespace

const Class kDictionaryClass = {Destroy, Equal, Hash};

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {0,       RetainObject, ReleaseObject,
                                                                nullptr, CFEqual,      CFHash};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {0, RetainObject, ReleaseObject, nullptr, CFEqual};

CFTypeID CFDictionaryGetTypeID() {
    return static_cast<CFTypeID>(Type::Dictionary);
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex, const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks) {
    return new __CFDictionary(keyCallBacks, valueCallBacks);
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
    return static_cast<CFIndex>(Checked(dictionary, Type::Dictionary).entries.size());
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    const auto* entry = Checked(dictionary, Type::Dictionary).Find(key);
    return entry ? entry->value : nullptr;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys, const void** values) {
    for (const auto& entry : Checked(dictionary, Type::Dictionary).entries) {
        if (keys) *keys++ = entry.key;
        if (values) *values++ = entry.value;
    }
}

void CFDictionaryAddValue(CFMutableDictionaryRef reference, const void* key, const void* value) {
    __CFDictionary& dictionary = Checked(reference, Type::Dictionary);
    const CFHashCode hash = dictionary.HashOf(key);
    if (!dictionary.Find(hash, key)) dictionary.Add(hash, key, value);
}

void CFDictionarySetValue(CFMutableDictionaryRef reference, const void* key, const void* value) {
    __CFDictionary& dictionary = Checked(reference, Type::Dictionary);
    const CFHashCode hash = dictionary.HashOf(key);
    if (const auto* entry = dictionary.Find(hash, key)) {
        dictionary.Replace(const_cast<__CFDictionary::Entry&>(*entry), key, value);
    } else {
        dictionary.Add(hash, key, value);
    }
}
