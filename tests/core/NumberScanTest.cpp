// The scans over bytes against those of String, which the platform's formatter does.
#include "core/NumberScan.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "core/String.h"
#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

// What a scan has done, with all bits of the value.
template <class Value>
struct Outcome {
    bool succeeded;
    std::uint32_t position;
    Value value;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

template <class Value, class Scan>
auto OutcomeOf(Scan scan, Value value, std::uint32_t position) {
    const bool succeeded = scan(value, position);
    if constexpr (std::is_same_v<Value, float>) {
        return Outcome<std::uint32_t>{succeeded, position, std::bit_cast<std::uint32_t>(value)};
    } else {
        return Outcome<Value>{succeeded, position, value};
    }
}

String FromAscii(const std::string& bytes) {
    String text;
    text.AssignBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return text;
}

void ExpectAlike(const std::string& bytes, std::uint32_t start) {
    SCOPED_TRACE(Json(bytes).dump() + " from " + std::to_string(start));
    const String text = FromAscii(bytes);
    EXPECT_EQ(OutcomeOf([&](float& v, std::uint32_t& p) { return ScanFloat(bytes, v, p); }, 77.0F, start),
              OutcomeOf([&](float& v, std::uint32_t& p) { return text.ScanFloat(v, p); }, 77.0F, start));
    EXPECT_EQ(
        OutcomeOf([&](std::uint64_t& v, std::uint32_t& p) { return ScanUInt64(bytes, v, p); }, std::uint64_t{77},
                  start),
        OutcomeOf([&](std::uint64_t& v, std::uint32_t& p) { return text.ScanUInt64(v, p); }, std::uint64_t{77}, start));
    EXPECT_EQ(OutcomeOf([&](bool& v, std::uint32_t& p) { return ScanBool(bytes, v, p); }, true, start),
              OutcomeOf([&](bool& v, std::uint32_t& p) { return text.ScanBool(v, p); }, true, start));
}

TEST(NumberScan, ReadsFloatsAsMeasured) {
    int rowCount = 0;
    for (const Json& row : VectorsOf("number_format.json")) {
        const Units units = UnitsOf(row, "text");
        std::string bytes;
        for (const UniChar unit : units) bytes += unit < 0x80 ? static_cast<char>(unit) : '\xFF';
        const auto start = row["start"].get<std::uint32_t>();
        if (!IsAscii(bytes) || row["class"] == "exotic" || start == bytes.size()) continue;
        SCOPED_TRACE(row.dump());
        bytes.resize(start + row["range_length"].get<std::size_t>());
        float value = 77;
        std::uint32_t position = start;
        EXPECT_EQ(ScanFloat(bytes, value, position), row["ok"].get<bool>());
        EXPECT_EQ(position, row["end"].get<std::uint32_t>());
        const auto bits = row["ok"].get<bool>() ? std::stoul(row["bits"].get<std::string>(), nullptr, 16)
                                                : std::bit_cast<std::uint32_t>(77.0F);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(value), bits);
        ExpectAlike(bytes, start);
        ++rowCount;
    }
    EXPECT_GT(rowCount, 250);
}

TEST(NumberScan, ReadsAsStringDoesAtTheEdges) {
    std::vector<std::string> texts = {"1e2147483647",
                                      "1e2147483648",
                                      "1e-2147483647",
                                      "-1e-2147483648",
                                      "0e2147483648",
                                      "0e2147483647",
                                      "-0e-5",
                                      "-1e-46",
                                      "1e-310",
                                      "2.2250738585072014e-308",
                                      "-nanx",
                                      "-Nan",
                                      "na",
                                      "1e+",
                                      " \t-",
                                      std::string("1\0002", 3),
                                      std::string("\0", 1)};
    for (std::size_t digits = 1019; digits <= 1026; ++digits) {
        texts.push_back("  " + std::string(digits, '0') + "1e5");
        texts.push_back("-" + std::string(digits, '0') + ".5e-1");
        texts.push_back("." + std::string(digits, '0') + "1");
    }
    for (const std::string& text : texts) ExpectAlike(text, 0);
}

TEST(NumberScan, ReadsAsStringDoesOverGeneratedTexts) {
    static constexpr char kUnits[] = "0123456789012345..--+eE ,\t\n\0naNxyestrufl";
    std::mt19937 random(20240817);
    for (int turn = 0; turn < 20000 && !::testing::Test::HasFailure(); ++turn) {
        std::string text(random() % 24, ' ');
        for (char& byte : text) byte = kUnits[random() % (sizeof(kUnits) - 1)];
        ExpectAlike(text, static_cast<std::uint32_t>(random() % (text.size() + 2)));
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

TEST(NumberScan, TellsWhatItCanRead) {
    for (std::size_t length = 1; length < 20; ++length) {
        std::string text(length, '\x7F');
        EXPECT_TRUE(IsAscii(text));
        for (char& byte : text) {
            byte = '\x80';
            EXPECT_FALSE(IsAscii(text));
            byte = '\0';
        }
    }
}

}  // namespace
}  // namespace ZEMA
