#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

using Number = Held<CFNumberRef>;

Number Integer(SInt64 value) {
    return Number(CFNumberCreate(nullptr, kCFNumberSInt64Type, &value));
}
Number Real(double value) {
    return Number(CFNumberCreate(nullptr, kCFNumberFloat64Type, &value));
}

TEST(CFNumber, SaysWhenAValueDoesNotFit) {
    constexpr SInt64 kLargest32 = 0xFFFFFFFF;
    const struct {
        const char* what;
        Number number;
        bool fits32, fits64;
        SInt32 cut32;
        SInt64 cut64;
    } rows[] = {
        {"small", Integer(-7), true, true, -7, -7},
        {"unsigned 32 bits", Integer(kLargest32), false, true, -1, kLargest32},
        {"whole real", Real(12.0), true, true, 12, 12},
        {"fraction", Real(-2.5), false, false, -2, -2},
        {"huge real", Real(1e300), false, false, -1, std::numeric_limits<SInt64>::max()},
        {"no number", Real(NAN), false, false, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        SInt32 narrow = 77;
        SInt64 wide = 77;
        EXPECT_EQ(CFNumberGetValue(row.number.get(), kCFNumberSInt32Type, &narrow), row.fits32);
        EXPECT_EQ(narrow, row.cut32);
        EXPECT_EQ(CFNumberGetValue(row.number.get(), kCFNumberSInt64Type, &wide), row.fits64);
        EXPECT_EQ(wide, row.cut64);
    }
    float real = 0;
    EXPECT_TRUE(CFNumberGetValue(Integer(1 << 24).get(), kCFNumberFloat32Type, &real));
    EXPECT_FALSE(CFNumberGetValue(Integer((1 << 24) + 1).get(), kCFNumberFloat32Type, &real));
}

TEST(CFNumber, IsEqualByValueOverAllTypes) {
    constexpr SInt64 kLargest = std::numeric_limits<SInt64>::max();
    // The last two are the same number as a double.
    const Number different[] = {Real(NAN), Real(-0.5), Integer(0), Integer(kLargest), Real(9223372036854775808.0)};
    for (const Number& one : different) {
        for (const Number& other : different) EXPECT_EQ(CFEqual(one.get(), other.get()), one == other);
    }
    EXPECT_TRUE(CFEqual(different[0].get(), Real(-NAN).get()));
    EXPECT_TRUE(CFEqual(Integer(5).get(), Real(5.0).get()));
    EXPECT_EQ(CFHash(Integer(5).get()), CFHash(Real(5.0).get()));
    EXPECT_EQ(CFHash(Real(0.0).get()), CFHash(Real(-0.0).get()));
    EXPECT_FALSE(CFEqual(Integer(1).get(), kCFBooleanTrue));
}

}  // namespace
}  // namespace ZEMA
