// The scans over bytes against measured values and against those of String, which the platform's formatter does.
#include "core/NumberScan.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
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

void ExpectAllAlike(const std::string& bytes, std::uint32_t start) {
    SCOPED_TRACE(Json(bytes).dump() + " from " + std::to_string(start));
    ExpectAlike<float>(&ScanFloat, &String::ScanFloat, bytes, start);
    ExpectAlike<std::uint64_t>(&ScanUInt64, &String::ScanUInt64, bytes, start);
    ExpectAlike<bool>(&ScanBool, &String::ScanBool, bytes, start);
}

TEST(NumberScan, ReadsFloatsAsMeasured) {
    int rowCount = 0;
    for (const Json& row : VectorsOf("number_format.json")) {
        std::string bytes;
        for (const UniChar unit : UnitsOf(row, "text")) bytes += unit < 0x80 ? static_cast<char>(unit) : '\xFF';
        const auto start = row["start"].get<std::uint32_t>();
        if (!IsAscii(bytes) || row["class"] == "exotic") continue;
        SCOPED_TRACE(row.dump());
        bytes.resize(start + row["range_length"].get<std::size_t>());
        float value = 77;
        std::uint32_t position = start;
        EXPECT_EQ(ScanFloat(bytes, value, position), row["ok"].get<bool>());
        EXPECT_EQ(position, row["end"].get<std::uint32_t>());
        const auto bits = row["ok"].get<bool>() ? std::stoul(row["bits"].get<std::string>(), nullptr, 16)
                                                : std::bit_cast<std::uint32_t>(77.0F);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(value), bits);
        ExpectAllAlike(bytes, start);
        ++rowCount;
    }
    EXPECT_GT(rowCount, 250);
}

TEST(NumberScan, ReadsAsStringDoesAtTheEdges) {
    std::vector<std::string> texts = {
        "1e2147483647", "1e2147483648", "1e-2147483647",           "-1e-46", "1e-310", "-1e-2147483648",
        "0e2147483648", "0e2147483647", "2.2250738585072014e-308", "-nanx",  "1e+",    std::string("1\0002", 3)};
    for (std::size_t digits = 1019; digits <= 1026; ++digits) {  // at most 1024 units are read
        texts.push_back("  " + std::string(digits, '0') + "1e5");
        texts.push_back("-" + std::string(digits, '0') + ".5e-1");
    }
    for (const std::string& text : texts) ExpectAllAlike(text, 0);
}

TEST(NumberScan, ReadsAsStringDoesOverGeneratedTexts) {
    static constexpr char kUnits[] = "0123456789012345..--+eE ,\t\n\0naNxyestrufl";
    std::mt19937 random(20240817);
    for (int turn = 0; turn < 20000 && !HasFailure(); ++turn) {
        std::string text(random() % 24, ' ');
        for (char& byte : text) byte = kUnits[random() % (sizeof(kUnits) - 1)];
        ExpectAllAlike(text, static_cast<std::uint32_t>(random() % (text.size() + 2)));
    }
}

TEST(NumberScan, RoundsAsTheLibraryDoes) {
    std::mt19937 random(99);
    for (int turn = 0; turn < 50000; ++turn) {
        const auto number = std::bit_cast<float>(static_cast<std::uint32_t>(random()) & 0xBFFFFFFF);
        char text[64];
        std::snprintf(text, sizeof(text), turn % 2 == 0 ? "%.17g" : "%.6f", static_cast<double>(number));
        float value = 77;
        std::uint32_t position = 0;
        ASSERT_TRUE(ScanFloat(text, value, position)) << text;
        ASSERT_EQ(value, static_cast<float>(std::strtod(text, nullptr))) << text;
        ASSERT_EQ(text[position], 0) << text;
    }
}

TEST(NumberScan, SeesAByteThatIsNotAsciiInAnyPlace) {
    for (std::size_t length = 1; length < 20; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            std::string text(length, '\x7F');
            EXPECT_TRUE(IsAscii(text));
            text[place] = '\x80';
            EXPECT_FALSE(IsAscii(text));
        }
    }
}

}  // namespace
}  // namespace ZEMA
