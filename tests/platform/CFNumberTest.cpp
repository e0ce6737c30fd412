#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <tuple>

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
        {"2^63, one too large", Real(0x1p63), false, false, -1, std::numeric_limits<SInt64>::max()},
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
    // An identifier whose bytes lie as those of this number do.
    const Held<CFUUIDRef> identifier(
        CFUUIDCreateFromUUIDBytes(nullptr, {5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_FALSE(CFEqual(Integer(5).get(), identifier.get()));
}

CFNumberFormatterRef Formatter() {
    static const Held<CFNumberFormatterRef> formatter(
        CFNumberFormatterCreate(nullptr, nullptr, kCFNumberFormatterNoStyle));
    return formatter.get();
}

void CheckRow(const Json& row, CFStringRef text) {
    CFRange range = {row["start"].get<CFIndex>(), row["range_length"].get<CFIndex>()};
    float value = 77;
    const bool isRead = CFNumberFormatterGetValueFromString(Formatter(), text, &range, kCFNumberFloat32Type, &value);
    EXPECT_EQ(isRead, row["ok"].get<bool>());
    EXPECT_EQ(range.location, row["start"].get<CFIndex>());
    EXPECT_EQ(range.length, row["reported_length"].get<CFIndex>());
    const std::uint32_t bits = isRead
                                   ? static_cast<std::uint32_t>(std::stoul(row["bits"].get<std::string>(), nullptr, 16))
                                   : std::bit_cast<std::uint32_t>(77.0f);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(value), bits);
}

// Rows of the class "exotic" are left out: digits of other scripts, other signs and points, direction marks. Which of
// them are read changes with the version of the framework's Unicode library, and this reader knows ASCII only.
TEST(CFNumberFormatter, ReadsAsMeasured) {
    int rowCount = 0;
    for (const Json& row : VectorsOf("number_format.json")) {
        if (row["class"] == "exotic") continue;
        SCOPED_TRACE(row.dump());
        const Text text = TextOf(row, "text");
        CheckRow(row, text.get());
        // The same behind a text that is kept in wide units.
        Units units = UnitsOf(text.get());
        units.push_back(0x20AC);
        CheckRow(row, MakeText(units).get());
        ++rowCount;
    }
    EXPECT_GT(rowCount, 250);
}

TEST(CFNumberFormatter, SkipsBlanksOfAllScriptsButNoLineEnds) {
    const std::tuple<Units, bool, CFIndex> rows[] = {
        {{0xA0, 0x1680, 0x2007, 0x200B, 0x202F, 0x205F, 0x3000, '5'}, true, 8},
        {{' ', 0x2028, '5'}, false, 1},
        {{0x85, '5'}, false, 0},
        {{'\n', '5'}, false, 0},
        {{'5', 0x0135}, true, 1},  // its low byte is a digit
    };
    for (const auto& [units, isRead, length] : rows) {
        SCOPED_TRACE(units[0]);
        CheckRow({{"start", 0},
                  {"range_length", units.size()},
                  {"ok", isRead},
                  {"bits", "40a00000"},
                  {"reported_length", length}},
                 MakeText(units).get());
    }
}

// Short numbers on both sides of zero, then such of 16 to 18 digits beside the middle between two floats, where one
// rounding more gives the other float.
TEST(CFNumberFormatter, RoundsAsTheCLibraryDoes) {
    for (const char* text : {"5e-22", ".0625e22", "123456789012345e20", "12345.678e-18", "999999999999999e-22",
                             "9.011613760000001e8", "9.052277999999999e7", "31.678179740905758", "0.11808807030320169",
                             "30.7329683303833043", "0.293663993477821406"}) {
        float value = 77;
        EXPECT_TRUE(CFNumberFormatterGetValueFromString(Formatter(), MakeText(text).get(), nullptr,
                                                        kCFNumberFloat32Type, &value));
        EXPECT_EQ(value, static_cast<float>(std::strtod(text, nullptr))) << text;
    }
}

}  // namespace
}  // namespace ZEMA
