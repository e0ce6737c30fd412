// The scans of booleans and unsigned numbers, over String and over bytes.
#include <gtest/gtest.h>

#include <string>

#include "core/NumberScan.h"
#include "core/String.h"
#include "tests/core/Utf8.h"

namespace ZEMA {
namespace {

// Scans with both forms; a text that is not ASCII with String alone. A scan that fails leaves the value alone.
template <class Value>
void ExpectScan(bool (String::*scan)(Value&, std::uint32_t&) const,
                bool (*scanBytes)(std::string_view, Value&, std::uint32_t&), const char* text, std::uint32_t start,
                bool succeeds, Value expected, std::uint32_t end) {
    const Value before = succeeds ? Value{expected == Value{}} : expected;
    const String asString = Text(text);
    const auto check = [&](auto scanHere) {
        Value value = before;
        std::uint32_t position = start;
        EXPECT_EQ(scanHere(value, position), succeeds);
        EXPECT_EQ(value, expected);
        EXPECT_EQ(position, end);
    };
    check([&](Value& value, std::uint32_t& position) { return (asString.*scan)(value, position); });
    if (IsAscii(text)) check([&](Value& value, std::uint32_t& position) { return scanBytes(text, value, position); });
}

TEST(StringScan, Booleans) {
    const struct {
        const char* what;
        const char* text;
        std::uint32_t start;
        bool succeeds, value;
        std::uint32_t end;
    } rows[] = {
        {"yes", "Yes", 0, true, true, 3},
        {"true", "x TRUE", 2, true, true, 6},
        {"false", "False", 0, true, false, 5},
        {"digit", "10", 0, true, true, 1},
        {"next digit", "10", 1, true, false, 2},
        {"only the literal's length is taken", "nothing", 0, true, false, 2},
        {"another digit", "2", 0, false, true, 0},
        {"cut off", "tru", 0, false, true, 0},
        {"blank in front", " yes", 0, false, true, 0},
        {"at the end", "yes", 3, false, true, 3},
        {"behind the end", "yes", 9, false, true, 9},
        {"a letter that folds to s", "ye\xC5\xBF", 0, true, true, 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ExpectScan<bool>(&String::ScanBool, &ScanBool, row.text, row.start, row.succeeds, row.value, row.end);
    }
    bool value = true;
    std::uint32_t position = 0;
    EXPECT_FALSE(String().ScanBool(value, position));
    EXPECT_FALSE(value);  // the empty text sets it, though it fails
    value = true;
    EXPECT_FALSE(ScanBool("", value, position));
    EXPECT_FALSE(value);
}

TEST(StringScan, UnsignedNumbers) {
    constexpr std::uint64_t kBefore = 77;
    const struct {
        const char* what;
        const char* text;
        std::uint32_t start;
        bool succeeds;
        std::uint64_t value;
        std::uint32_t end;
    } rows[] = {
        {"plain", "12,34", 0, true, 12, 2},
        {"skips what is before", "abc12", 0, true, 12, 5},
        {"from a position", "12,34", 2, true, 34, 5},
        {"plus", "+5", 0, true, 5, 2},
        {"negative", "  -12", 0, false, kBefore, 5},
        {"negative and positive", "-+5x", 0, false, kBefore, 3},
        {"positive and negative", "+-5", 0, false, kBefore, 1},
        {"blanks behind a sign", "+ \t\r\n5", 0, true, 5, 6},
        {"wide blanks behind a sign",
         "+\xE3\x80\x80\xC2\xA0"
         "5",
         0, true, 5, 4},
        {"no number behind a sign", "x+  y", 0, false, kBefore, 2},
        {"sign at the end", "x-", 0, false, kBefore, 2},
        {"the first sign counts", "a-b5", 0, false, kBefore, 2},
        {"no digit at all", "abc", 0, false, kBefore, 0},
        {"other scripts' digits are none", "\xD9\xA1", 0, false, kBefore, 0},
        {"nothing", "", 0, false, kBefore, 0},
        {"behind the end", "12", 3, false, kBefore, 3},
        {"leading zeros", "0000000000000000000000007", 0, true, 7, 25},
        {"2^64 - 1", "x18446744073709551615", 0, true, 0xFFFFFFFFFFFFFFFF, 21},
        {"2^64", "18446744073709551616", 0, false, kBefore, 20},
        {"one digit more", "184467440737095516150", 0, false, kBefore, 21},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ExpectScan<std::uint64_t>(&String::ScanUInt64, &ScanUInt64, row.text, row.start, row.succeeds, row.value,
                                  row.end);
    }
}

TEST(StringScan, NarrowNumbersFailWhereTheyDoNotFit) {
    ExpectScan<std::uint32_t>(&String::ScanUInt32, &ScanUInt32, "4294967295", 0, true, 0xFFFFFFFF, 10);
    ExpectScan<std::uint32_t>(&String::ScanUInt32, &ScanUInt32, "4294967296 7", 0, false, 77, 10);
    ExpectScan<std::uint32_t>(&String::ScanUInt32, &ScanUInt32, "-1", 0, false, 77, 2);
}

}  // namespace
}  // namespace ZEMA
