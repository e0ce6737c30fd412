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
        EXPECT_EQ(CFNumberGetValue(row.number.get(), kCFNumberLongLongType, &wide), row.fits64);
        EXPECT_EQ(wide, row.cut64);
    }
    float real = 0;
    EXPECT_TRUE(CFNumberGetValue(Integer(1 << 24).get(), kCFNumberFloatType, &real));
    EXPECT_FALSE(CFNumberGetValue(Integer((1 << 24) + 1).get(), kCFNumberFloatType, &real));
}

TEST(CFNumber, ComparesByValueOverAllTypes) {
    constexpr SInt64 kLargest = std::numeric_limits<SInt64>::max();
    const Number ascending[] = {Real(NAN),  Integer(-kLargest), Real(-0.5),        Integer(0),
                                Real(0.25), Integer(5),         Integer(kLargest), Real(9223372036854775808.0)};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            const int expected = i < j ? -1 : i > j ? 1 : 0;
            EXPECT_EQ(CFNumberCompare(ascending[i].get(), ascending[j].get(), nullptr), expected) << i << " " << j;
        }
    }
    EXPECT_TRUE(CFEqual(Integer(5).get(), Real(5.0).get()));
    EXPECT_EQ(CFHash(Integer(5).get()), CFHash(Real(5.0).get()));
    EXPECT_EQ(CFHash(Real(0.0).get()), CFHash(Real(-0.0).get()));
    EXPECT_FALSE(CFEqual(Integer(1).get(), kCFBooleanTrue));
}

}  // namespace
}  // namespace ZEMA
