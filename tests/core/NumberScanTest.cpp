// The scans of String, those over bytes, which give the same for the same text, and numbers in C texts.
#include "core/NumberScan.h"

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "core/ByteText.h"
#include "core/String.h"
#include "tests/platform/Vectors.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA {
namespace {

template <class Value>
void ExpectAlike(bool (*scanBytes)(std::string_view, Value&, std::uint32_t&),
                 bool (String::*scan)(Value&, std::uint32_t&) const, const std::string& bytes, std::uint32_t start) {
    String text;
    text.AssignBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    Value fromBytes{1};
    Value fromText{1};
    std::uint32_t behindBytes = start;
    std::uint32_t behindText = start;
    EXPECT_EQ(scanBytes(bytes, fromBytes, behindBytes), (text.*scan)(fromText, behindText));
    EXPECT_EQ(behindBytes, behindText);
    EXPECT_EQ(std::memcmp(&fromBytes, &fromText, sizeof(Value)), 0) << fromBytes << " is not " << fromText;
}

void ExpectAllAlike(const std::string& bytes, std::uint32_t start = 0) {
    if (!IsAscii(bytes)) return;
    SCOPED_TRACE(Json(bytes).dump() + " from " + std::to_string(start));
    ExpectAlike<float>(&ScanFloat, &String::ScanFloat, bytes, start);
    ExpectAlike<std::uint64_t>(&ScanUInt64, &String::ScanUInt64, bytes, start);
    ExpectAlike<std::uint32_t>(&ScanUInt32, &String::ScanUInt32, bytes, start);
    ExpectAlike<bool>(&ScanBool, &String::ScanBool, bytes, start);
}

// One scan of a String; a value of which it fails is the one from before.
template <class Value>
struct Scan {
    const char* text;
    std::uint32_t start;
    bool succeeds;
    Value value;
    std::uint32_t end;
};

template <class Value, std::size_t kCount>
void ExpectScans(bool (String::*scan)(Value&, std::uint32_t&) const, const Scan<Value> (&rows)[kCount]) {
    for (const Scan<Value>& row : rows) {
        SCOPED_TRACE(row.text);
        Value value = row.succeeds ? static_cast<Value>(row.value == Value{}) : row.value;
        std::uint32_t position = row.start;
        EXPECT_EQ((FromUtf8(row.text).*scan)(value, position), row.succeeds);
        EXPECT_EQ(value, row.value);
        EXPECT_EQ(position, row.end);
        ExpectAllAlike(row.text, row.start);
    }
}

TEST(NumberScan, ReadsBooleans) {
    ExpectScans<bool>(&String::ScanBool, {{"Yes", 0, true, true, 3},
                                          {"x TRUE", 2, true, true, 6},
                                          {"False", 0, true, false, 5},
                                          {"10", 0, true, true, 1},
                                          {"nothing", 0, true, false, 2},  // the literal's length alone is taken
                                          {"2", 0, false, true, 0},
                                          {"yes", 3, false, true, 3},
                                          {"ye\xC5\xBF", 0, true, true, 3}});  // a letter that folds to s
    bool value = true;
    std::uint32_t position = 0;
    EXPECT_FALSE(String().ScanBool(value, position));
    EXPECT_FALSE(value);  // the empty text sets it, though it fails
}

TEST(NumberScan, ReadsUnsignedNumbers) {
    ExpectScans<std::uint64_t>(&String::ScanUInt64, {{"abc12,34", 0, true, 12, 5},
                                                     {"  -12", 0, false, 77, 5},
                                                     {"-+5x", 0, false, 77, 3},
                                                     {"+-5", 0, false, 77, 1},
                                                     {"+ \t\r\n5", 0, true, 5, 6},
                                                     {"+\xE3\x80\x80\xC2\xA0\x35", 0, true, 5, 4},  // wide blanks
                                                     {"x+  y", 0, false, 77, 2},
                                                     {"\xD9\xA1", 0, false, 77, 0},  // a digit of another script
                                                     {"12", 3, false, 77, 3},
                                                     {"0000000000000000000000007", 0, true, 7, 25},
                                                     {"x18446744073709551615", 0, true, 0xFFFFFFFFFFFFFFFF, 21},
                                                     {"18446744073709551616", 0, false, 77, 20},
                                                     {"184467440737095516150", 0, false, 77, 21}});
    ExpectScans<std::uint32_t>(&String::ScanUInt32,
                               {{"4294967295", 0, true, 0xFFFFFFFF, 10}, {"4294967296 7", 0, false, 77, 10}});
}

TEST(NumberScan, ReadsFloatsUpToTheirLastDigit) {
    ExpectScans<float>(&String::ScanFloat,
                       {{"x -1.5e2x", 2, true, -150, 8}, {"1e", 0, true, 1, 1}, {"1e+;", 0, true, 1, 1}});
}

// White space and line ends between a sign and its digits, as the platform's scanner steps over them.
TEST(NumberScan, SkipsBlanksBehindASignAsMeasured) {
    for (const Json& row : VectorsOf("scanner.json")) {
        SCOPED_TRACE(row.dump());
        Units units = UnitsOf(row, "text");
        const std::uint32_t location = row["location"].get<std::uint32_t>();
        units.insert(units.begin() + location, '+');
        std::uint64_t value = 77;
        std::uint32_t position = location;
        const std::string scanned = row.value("scanned", "");
        const bool fits = !scanned.empty() && scanned.size() < 20;
        EXPECT_EQ(String(MakeText(units).get()).ScanUInt64(value, position), fits);
        EXPECT_EQ(position, row["new_location"].get<std::uint32_t>() + 1);
        EXPECT_EQ(value, fits ? std::stoull(scanned) : 77);
    }
}

TEST(NumberScan, ReadsBytesAsStringDoesInMeasuredTexts) {
    for (const Json& row : VectorsOf("number_format.json")) {
        std::string bytes;
        for (const UniChar unit : UnitsOf(row, "text")) bytes += unit < 0x80 ? static_cast<char>(unit) : '\xFF';
        bytes.resize(row["start"].get<std::size_t>() + row["range_length"].get<std::size_t>());
        ExpectAllAlike(bytes, row["start"].get<std::uint32_t>());
    }
}

TEST(ByteText, ParsesUnsignedNumbers) {
    constexpr std::uint32_t kLargest = 0xFFFFFFFF;
    const struct {
        const char* what;
        const char* text;
        int base;
        std::uint32_t value;
        int end, error;
    } rows[] = {
        {"white space and sign in front", " \t\n\v\f\r+7 ", 10, 7, 8, 0},
        {"no white space", "\xA0\x35", 10, 0, 0, 0},
        {"no digits", " -x", 10, 0, 0, 0},
        {"negative", "-5", 10, kLargest, 2, ERANGE},
        {"negative zero", "-0", 10, kLargest, 2, ERANGE},
        {"the largest", "4294967295", 10, kLargest, 10, 0},
        {"one more", "4294967296", 10, kLargest, 10, ERANGE},
        {"far too large, with a small rest", "42949672960000000001", 10, kLargest, 20, ERANGE},
        {"base 0, hexadecimal", "0X1fg", 0, 31, 4, 0},
        {"base 0, octal", "0178", 0, 15, 3, 0},
        {"a prefix without digits is the number 0", "0xg", 0, 0, 1, 0},
        {"base 16 skips a prefix", "0xff", 16, 255, 4, 0},
        {"base 36", "zZ{", 36, 35 * 36 + 35, 2, 0},
        {"base 37 reads nothing", "1", 37, 0, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        errno = EINVAL;
        const char* end = nullptr;
        EXPECT_EQ(ParseUInt32(row.text, &end, row.base), row.value);
        EXPECT_EQ(errno, row.error);
        EXPECT_EQ(end - row.text, row.end);
    }
}

TEST(ByteText, ParsesFloatsAsTheStandardLibraryDoes) {
    for (const char* const text : {"0",
                                   "-0",
                                   "-0.0",
                                   "7,8",
                                   "12.25",
                                   "-4.37113883e-08",
                                   "1.00000017881393432617187499",
                                   "1.",
                                   "1.e2",
                                   ".5",
                                   "1e",
                                   "1e+",
                                   "0x1p4",
                                   "-0X.8p1",
                                   "3.4e38",
                                   "3.5e38",
                                   "-1e99",
                                   "1e-38",
                                   "1e-40",
                                   "1e-60",
                                   "0e5",
                                   "16777217",
                                   "+1",
                                   " 1",
                                   "-",
                                   "-x",
                                   "inf",
                                   "nan",
                                   "1.17549435e-38",
                                   "00012",
                                   "9007199254740993e-10",
                                   ""}) {
        SCOPED_TRACE(text);
        errno = 0;
        char* behind = nullptr;
        const float expected = std::strtof(text, &behind);
        const int error = errno;
        errno = EINVAL;
        const char* end = nullptr;
        const float value = ParseFloat(text, &end);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(end, behind);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(value), std::bit_cast<std::uint32_t>(expected));
    }
}

TEST(ByteText, ParsesFloatsAlikeInALocaleWithADecimalComma) {
    // Made here, since hardly a machine for builds has one.
    const testing::TemporaryFolder folder;
    const std::string command = "localedef -f UTF-8 -i de_DE '" + folder / "de_DE.UTF-8" + "' >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) GTEST_SKIP() << "no locale can be made";
    setenv("LOCPATH", folder.Path().c_str(), 1);
    EXPECT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    errno = EINVAL;
    const char* const text = " -1.5e2x";
    const char* end = nullptr;
    const float value = ParseFloat(text, &end);
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
    EXPECT_EQ(value, -150.0F);
    EXPECT_EQ(end - text, 7);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(ParseFloat("1e39", nullptr), std::numeric_limits<float>::infinity());
    EXPECT_EQ(errno, ERANGE);
}

}  // namespace
}  // namespace ZEMA
