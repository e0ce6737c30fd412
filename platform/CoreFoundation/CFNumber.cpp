#include <CoreFoundation/CFNumber.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/CoreFoundation/CFRuntime.h"

struct __CFBoolean : ZEMA::CF::Object {
    constexpr __CFBoolean() : Object(ZEMA::CF::Type::Boolean, 0, ZEMA::CF::kConstantBit) {}
};

struct __CFNumber : ZEMA::CF::Object {
    __CFNumber(CFNumberType storedType, SInt64 number)
        : Object(ZEMA::CF::Type::Number, 0), kept(storedType), integer(number) {}
    __CFNumber(CFNumberType storedType, double number)
        : Object(ZEMA::CF::Type::Number, 0), kept(storedType), real(number) {}

    bool IsReal() const { return kept == kCFNumberFloat32Type || kept == kCFNumberFloat64Type; }

    const CFNumberType kept;  // kCFNumberSInt32Type, kCFNumberSInt64Type or one of the two above
    union {
        SInt64 integer;
        double real;
    };
};

namespace ZEMA::CF {
namespace {

constinit const __CFBoolean trueObject;
constinit const __CFBoolean falseObject;

// The type of fixed size behind a type that is named after one of C.
CFNumberType WithFixedSize(CFNumberType type) {
    switch (type) {
        case kCFNumberCharType:
            return kCFNumberSInt8Type;
        case kCFNumberShortType:
            return kCFNumberSInt16Type;
        case kCFNumberIntType:
            return kCFNumberSInt32Type;
        case kCFNumberLongType:
        case kCFNumberLongLongType:
        case kCFNumberCFIndexType:
            return kCFNumberSInt64Type;
        case kCFNumberFloatType:
            return kCFNumberFloat32Type;
        case kCFNumberDoubleType:
            return kCFNumberFloat64Type;
        default:
            return type;
    }
}

template <class T>
T ReadAs(const void* value) {
    T number;
    std::memcpy(&number, value, sizeof(number));
    return number;
}

CFNumberRef NewInteger(SInt64 number) {
    return new __CFNumber(static_cast<SInt32>(number) == number ? kCFNumberSInt32Type : kCFNumberSInt64Type, number);
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

CFComparisonResult Compare(const __CFNumber& left, const __CFNumber& right) {
    if (!left.IsReal() && !right.IsReal()) {
        return left.integer < right.integer   ? kCFCompareLessThan
               : left.integer > right.integer ? kCFCompareGreaterThan
                                              : kCFCompareEqualTo;
    }
    const Wide leftValue = ValueOf(left);
    const Wide rightValue = ValueOf(right);
    // What is no number comes before all numbers, so that there is an order.
    if (std::isnan(leftValue)) return std::isnan(rightValue) ? kCFCompareEqualTo : kCFCompareLessThan;
    if (std::isnan(rightValue)) return kCFCompareGreaterThan;
    return leftValue < rightValue   ? kCFCompareLessThan
           : leftValue > rightValue ? kCFCompareGreaterThan
                                    : kCFCompareEqualTo;
}

void Destroy(const Object* object) noexcept {
    delete static_cast<const __CFNumber*>(object);
}

bool Equal(const Object* object1, const Object* object2) {
    return Compare(*static_cast<const __CFNumber*>(object1), *static_cast<const __CFNumber*>(object2)) ==
           kCFCompareEqualTo;
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
    switch (WithFixedSize(type)) {
        case kCFNumberSInt8Type:
            return NewInteger(ReadAs<SInt8>(value));
        case kCFNumberSInt16Type:
            return NewInteger(ReadAs<SInt16>(value));
        case kCFNumberSInt32Type:
            return NewInteger(ReadAs<SInt32>(value));
        case kCFNumberSInt64Type:
            return NewInteger(ReadAs<SInt64>(value));
        case kCFNumberFloat32Type:
            return new __CFNumber(kCFNumberFloat32Type, double{ReadAs<float>(value)});
        case kCFNumberFloat64Type:
            return new __CFNumber(kCFNumberFloat64Type, ReadAs<double>(value));
        default:
            std::abort();
    }
}

CFNumberType CFNumberGetType(CFNumberRef number) {
    return Checked(number, Type::Number).kept;
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
    return Checked(number, Type::Number).IsReal();
}

Boolean CFNumberGetValue(CFNumberRef reference, CFNumberType type, void* value) {
    const __CFNumber& number = Checked(reference, Type::Number);
    switch (WithFixedSize(type)) {
        case kCFNumberSInt8Type:
            return WriteInteger<SInt8>(number, value);
        case kCFNumberSInt16Type:
            return WriteInteger<SInt16>(number, value);
        case kCFNumberSInt32Type:
            return WriteInteger<SInt32>(number, value);
        case kCFNumberSInt64Type:
            return WriteInteger<SInt64>(number, value);
        case kCFNumberFloat32Type:
            return WriteReal<float>(number, value);
        case kCFNumberFloat64Type:
            return WriteReal<double>(number, value);
        default:
            std::abort();
    }
}

CFComparisonResult CFNumberCompare(CFNumberRef number1, CFNumberRef number2, void*) {
    return Compare(Checked(number1, Type::Number), Checked(number2, Type::Number));
}
