#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
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

// Numbers of up to 20 digits with points and exponents everywhere, so that all ways to the nearest double are taken.
TEST(CFNumberFormatter, RoundsAsTheCLibraryDoes) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20'000; ++i) {
        std::string digits = std::to_string(random() >> (random() % 64));
        digits.insert(random() % (digits.size() + 1), ".");
        std::string text = digits + "e" + std::to_string(static_cast<int>(random() % 60) - 40);
        if (i % 2 == 0) {
            // Beside the middle between two floats, where the last bit of the double decides.
            const float below = std::ldexp(static_cast<float>(random() >> 40), static_cast<int>(random() % 40) - 40);
            const double middle = (double{below} + double{std::nextafter(below, 1e30F)}) / 2;
            char beside[32];
            std::snprintf(beside, sizeof beside, "%.17g", std::nextafter(middle, i % 4 == 0 ? 0 : 1e30));
            text = beside;
        }
        SCOPED_TRACE(text);
        float value = 77;
        const bool isRead = CFNumberFormatterGetValueFromString(Formatter(), MakeText(text).get(), nullptr,
                                                                kCFNumberFloat32Type, &value);
        const double expected = std::strtod(text.c_str(), nullptr);
        ASSERT_EQ(isRead, expected <= std::numeric_limits<float>::max());
        ASSERT_EQ(value, isRead ? static_cast<float>(expected) : 77);
    }
}

}  // namespace
}  // namespace ZEMA
