#include <CoreFoundation/CFArray.h>

#include <algorithm>
#include <span>
#include <vector>

#include "platform/CoreFoundation/CFRuntime.h"

struct __CFArray : ZEMA::CF::Object {
    __CFArray(bool isMutable, const CFArrayCallBacks* arrayCallBacks)
        : Object(ZEMA::CF::Type::Array, isMutable ? kMutable : 0),
          callBacks(arrayCallBacks ? *arrayCallBacks : CFArrayCallBacks{}) {}

    static constexpr std::uint8_t kMutable = 1;

    void Append(const void* value) {
        values.push_back(value);
        if (callBacks.retain) values.back() = callBacks.retain(kCFAllocatorDefault, value);
    }
    bool AreEqual(const void* value1, const void* value2) const {
        return value1 == value2 || (callBacks.equal && callBacks.equal(value1, value2));
    }

    const CFArrayCallBacks callBacks;
    std::vector<const void*> values;
};

namespace ZEMA::CF {
namespace {

const void* RetainValue(CFAllocatorRef, const void* value) {
    return CFRetain(value);
}
void ReleaseValue(CFAllocatorRef, const void* value) {
    CFRelease(value);
}

void Destroy(const Object* object) noexcept {
    const auto* array = static_cast<const __CFArray*>(object);
    if (array->callBacks.release) {
        for (const void* value : array->values) array->callBacks.release(kCFAllocatorDefault, value);
    }
    delete array;
}

bool Equal(const Object* object1, const Object* object2) {
    const auto& left = *static_cast<const __CFArray*>(object1);
    const auto& right = *static_cast<const __CFArray*>(object2);
    return left.callBacks.equal == right.callBacks.equal &&
           std::ranges::equal(left.values, right.values,
                              [&](const void* value1, const void* value2) { return left.AreEqual(value1, value2); });
}

CFHashCode Hash(const Object* object) {
    return static_cast<const __CFArray*>(object)->values.size();
}

std::span<const void* const> Values(const __CFArray& array, CFRange range) {
    const auto count = static_cast<CFIndex>(array.values.size());
    Require(range.location >= 0 && range.location <= count);
    Require(range.length >= 0 && range.length <= count - range.location);
    return std::span(array.values)
        .subspan(static_cast<std::size_t>(range.location), static_cast<std::size_t>(range.length));
}

__CFArray& Changing(CFMutableArrayRef array) {
    Require(Checked(array, Type::Array).form == __CFArray::kMutable);
    return *array;
}

}  // namespace

const Class kArrayClass = {Destroy, Equal, Hash};

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

const CFArrayCallBacks kCFTypeArrayCallBacks = {0, RetainValue, ReleaseValue, nullptr, CFEqual};

CFTypeID CFArrayGetTypeID() {
    return static_cast<CFTypeID>(Type::Array);
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count, const CFArrayCallBacks* callBacks) {
    Require(count >= 0);
    Owned<__CFArray> owner(new __CFArray(false, callBacks));
    auto& array = const_cast<__CFArray&>(*owner);
    array.values.reserve(static_cast<std::size_t>(count));
    for (const void* value : std::span(values, static_cast<std::size_t>(count))) array.Append(value);
    return owner.release();
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex, const CFArrayCallBacks* callBacks) {
    return new __CFArray(true, callBacks);
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    return static_cast<CFIndex>(Checked(array, Type::Array).values.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    return Values(Checked(array, Type::Array), {index, 1})[0];
}

Boolean CFArrayContainsValue(CFArrayRef array, CFRange range, const void* value) {
    const __CFArray& checked = Checked(array, Type::Array);
    return std::ranges::any_of(Values(checked, range),
                               [&](const void* element) { return checked.AreEqual(element, value); });
}

void CFArrayAppendValue(CFMutableArrayRef array, const void* value) {
    Changing(array).Append(value);
}

void CFArraySortValues(CFMutableArrayRef array, CFRange range, CFComparatorFunction comparator, void* context) {
    __CFArray& changing = Changing(array);
    const std::size_t count = Values(changing, range).size();
    const auto first = changing.values.begin() + range.location;
    std::stable_sort(first, first + static_cast<std::ptrdiff_t>(count), [&](const void* value1, const void* value2) {
        return comparator(value1, value2, context) == kCFCompareLessThan;
    });
}
