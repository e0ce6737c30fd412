#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <limits>
#include <random>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

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
    const struct {
        Units units;
        bool isRead;
        CFIndex length;
    } rows[] = {
        {{0xA0, 0x1680, 0x2007, 0x200B, 0x202F, 0x205F, 0x3000, '5'}, true, 8},
        {{' ', 0x2028, '5'}, false, 1},
        {{0x85, '5'}, false, 0},
        {{'\n', '5'}, false, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.units[0]);
        const Text text = MakeText(row.units);
        CFRange range = WholeOf(text.get());
        float value = 0;
        EXPECT_EQ(CFNumberFormatterGetValueFromString(Formatter(), text.get(), &range, kCFNumberFloat32Type, &value),
                  row.isRead);
        EXPECT_EQ(range.length, row.length);
    }
}

// Numbers of up to 20 digits with points and exponents everywhere, so that all ways to the nearest double are taken.
TEST(CFNumberFormatter, RoundsAsTheCLibraryDoes) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20'000; ++i) {
        std::string digits = std::to_string(random() >> (random() % 64));
        digits.insert(random() % (digits.size() + 1), ".");
        const std::string text = digits + "e" + std::to_string(static_cast<int>(random() % 60) - 40);
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
