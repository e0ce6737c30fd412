// The scans of String, and those over bytes, which give the same for the same text.
#include "core/NumberScan.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "core/String.h"
#include "tests/platform/Vectors.h"

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
        Value value = row.succeeds ? Value{row.value == Value{}} : row.value;
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

}  // namespace
}  // namespace ZEMA
