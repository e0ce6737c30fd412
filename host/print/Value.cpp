#include "host/print/Value.h"

#include <algorithm>
#include <utility>

#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

Value NumberOf(CFNumberRef number) {
    if (CFNumberIsFloatType(number)) {
        double value = 0;
        CFNumberGetValue(number, kCFNumberFloat64Type, &value);
        return {value};
    }
    std::int64_t value = 0;
    CFNumberGetValue(number, kCFNumberSInt64Type, &value);
    return {value};
}

Value ListOf(CFArrayRef array) {
    Value::List list;
    const CFIndex count = CFArrayGetCount(array);
    list.reserve(static_cast<std::size_t>(count));
    for (CFIndex i = 0; i < count; ++i) list.push_back(ValueOf(CFArrayGetValueAtIndex(array, i)));
    return {std::move(list)};
}

// A dictionary has no order of its own; sorted, equal ones look the same.
Value DictionaryOf(CFDictionaryRef dictionary) {
    const auto count = static_cast<std::size_t>(CFDictionaryGetCount(dictionary));
    std::vector<const void*> keys(count);
    CFDictionaryGetKeysAndValues(dictionary, keys.data(), nullptr);
    std::erase_if(keys, [](const void* key) { return CFGetTypeID(key) != CFStringGetTypeID(); });
    std::sort(keys.begin(), keys.end(), [](const void* a, const void* b) {
        return CFStringCompare(static_cast<CFStringRef>(a), static_cast<CFStringRef>(b), 0) == kCFCompareLessThan;
    });
    Value::Dictionary values;
    values.reserve(keys.size());
    for (const void* key : keys) {
        values.push_back({Utf8Of(static_cast<CFStringRef>(key)), ValueOf(CFDictionaryGetValue(dictionary, key))});
    }
    return {std::move(values)};
}

}  // namespace

const Value* Find(const Value::Dictionary& dictionary, std::string_view key) {
    const auto found =
        std::find_if(dictionary.begin(), dictionary.end(), [&](const auto& item) { return item.key == key; });
    return found == dictionary.end() ? nullptr : &found->value;
}

Value ValueOf(CFTypeRef object) {
    const CFTypeID type = CFGetTypeID(object);
    if (type == CFStringGetTypeID()) return {Utf8Of(static_cast<CFStringRef>(object))};
    if (type == CFNumberGetTypeID()) return NumberOf(static_cast<CFNumberRef>(object));
    if (type == CFBooleanGetTypeID()) return {CFBooleanGetValue(static_cast<CFBooleanRef>(object)) != 0};
    if (type == CFArrayGetTypeID()) return ListOf(static_cast<CFArrayRef>(object));
    if (type == CFDictionaryGetTypeID()) return DictionaryOf(static_cast<CFDictionaryRef>(object));
    return {std::string()};
}

}  // namespace ZEMA
