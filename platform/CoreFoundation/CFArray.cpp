#include <CoreFoundation/CFArray.h>

#include <algorithm>
#include <vector>

#include "platform/CoreFoundation/CFRuntime.h"

// Any of these may be changed by whoever holds it as a mutable list: nobody makes others.
struct __CFArray : ZEMA::CF::Object {
    explicit __CFArray(const CFArrayCallBacks* arrayCallBacks)
        : Object(ZEMA::CF::Type::Array, 0), callBacks(arrayCallBacks ? *arrayCallBacks : CFArrayCallBacks{}) {}

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

}  // namespace

const Class kArrayClass = {Destroy, Equal, Hash};

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

const CFArrayCallBacks kCFTypeArrayCallBacks = {0, RetainValue, ReleaseValue, nullptr, CFEqual};

CFTypeID CFArrayGetTypeID() {
    return static_cast<CFTypeID>(Type::Array);
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex, const CFArrayCallBacks* callBacks) {
    return new __CFArray(callBacks);
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    return static_cast<CFIndex>(Checked(array, Type::Array).values.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    Require(index >= 0 && index < CFArrayGetCount(array));
    return array->values[static_cast<std::size_t>(index)];
}

void CFArrayAppendValue(CFMutableArrayRef array, const void* value) {
    const __CFArray& list = Checked(array, Type::Array);
    array->values.push_back(value);
    if (list.callBacks.retain) array->values.back() = list.callBacks.retain(kCFAllocatorDefault, value);
}
