#include <CoreFoundation/CFNumber.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/CoreFoundation/CFRuntime.h"

// One of two constants, told apart by their address.
struct __CFBoolean : ZEMA::CF::Object {
    constexpr __CFBoolean() : Object(ZEMA::CF::Type::Boolean, 0, ZEMA::CF::kConstantBit) {}
};

// A whole number of up to 64 bits or a double; the type that it was made from is forgotten, since a float is a double
// and equality does not ask for it.
struct __CFNumber : ZEMA::CF::Object {
    static constexpr std::uint8_t kReal = 1;

    explicit __CFNumber(SInt64 number) : Object(ZEMA::CF::Type::Number, 0), integer(number) {}
    explicit __CFNumber(double number) : Object(ZEMA::CF::Type::Number, kReal), real(number) {}

    bool IsReal() const { return form == kReal; }

    union {
        SInt64 integer;
        double real;
    };
};

namespace ZEMA::CF {
namespace {

constinit const __CFBoolean trueObject;
constinit const __CFBoolean falseObject;

template <class T>
T ReadAs(const void* value) {
    T number;
    std::memcpy(&number, value, sizeof(number));
    return number;
}

// Large enough for every value of both kinds without rounding, where it is wider than a double.
using Wide = long double;
Wide ValueOf(const __CFNumber& number) {
    return number.IsReal() ? static_cast<Wide>(number.real) : static_cast<Wide>(number.integer);
}

template <class T>
bool WriteReal(const __CFNumber& number, void* value) {
    const T written = static_cast<T>(ValueOf(number));
    std::memcpy(value, &written, sizeof(written));
    return static_cast<Wide>(written) == ValueOf(number) || (number.IsReal() && std::isnan(number.real));
}

SInt64 Saturated(double number) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (std::isnan(number)) return 0;
    if (number >= kLimit) return std::numeric_limits<SInt64>::max();
    if (number < -kLimit) return std::numeric_limits<SInt64>::min();
    return static_cast<SInt64>(number);
}

template <class T>
bool WriteInteger(const __CFNumber& number, void* value) {
    const SInt64 whole = number.IsReal() ? Saturated(number.real) : number.integer;
    const T written = static_cast<T>(whole);
    std::memcpy(value, &written, sizeof(written));
    return static_cast<Wide>(written) == ValueOf(number);
}

void Destroy(const Object* object) noexcept {
    delete static_cast<const __CFNumber*>(object);
}

// All that is no number is equal, so that a key can be found again.
bool Equal(const Object* object1, const Object* object2) {
    const auto& left = *static_cast<const __CFNumber*>(object1);
    const auto& right = *static_cast<const __CFNumber*>(object2);
    if (!left.IsReal() && !right.IsReal()) return left.integer == right.integer;
    const Wide leftValue = ValueOf(left);
    const Wide rightValue = ValueOf(right);
    return leftValue == rightValue || (std::isnan(leftValue) && std::isnan(rightValue));
}

// The nearest double is the same for equal numbers of any type; adding 0 makes one zero of both.
CFHashCode Hash(const Object* object) {
    const double nearest = static_cast<double>(ValueOf(*static_cast<const __CFNumber*>(object))) + 0.0;
    Hasher hasher;
    hasher.Add(std::isnan(nearest) ? 0 : std::bit_cast<std::uint64_t>(nearest));
    return hasher.state;
}

}  // namespace

const Class kNumberClass = {Destroy, Equal, Hash};

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

constinit const CFBooleanRef kCFBooleanTrue = &trueObject;
constinit const CFBooleanRef kCFBooleanFalse = &falseObject;

CFTypeID CFBooleanGetTypeID() {
    return static_cast<CFTypeID>(Type::Boolean);
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    return &Checked(boolean, Type::Boolean) == kCFBooleanTrue;
}

CFTypeID CFNumberGetTypeID() {
    return static_cast<CFTypeID>(Type::Number);
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
    switch (type) {
        case kCFNumberSInt32Type:
            return new __CFNumber(SInt64{ReadAs<SInt32>(value)});
        case kCFNumberSInt64Type:
            return new __CFNumber(ReadAs<SInt64>(value));
        case kCFNumberFloat32Type:
            return new __CFNumber(double{ReadAs<float>(value)});
        case kCFNumberFloat64Type:
            return new __CFNumber(ReadAs<double>(value));
    }
    std::abort();
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
    return Checked(number, Type::Number).IsReal();
}

Boolean CFNumberGetValue(CFNumberRef reference, CFNumberType type, void* value) {
    const __CFNumber& number = Checked(reference, Type::Number);
    switch (type) {
        case kCFNumberSInt32Type:
            return WriteInteger<SInt32>(number, value);
        case kCFNumberSInt64Type:
            return WriteInteger<SInt64>(number, value);
        case kCFNumberFloat32Type:
            return WriteReal<float>(number, value);
        case kCFNumberFloat64Type:
            return WriteReal<double>(number, value);
    }
    std::abort();
}
