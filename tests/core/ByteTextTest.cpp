#include "core/ByteText.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace ZEMA {
namespace {

constexpr std::uint32_t kLargest = 0xFFFFFFFF;

TEST(ByteText, ParsesUnsignedNumbers) {
    const struct {
        const char* what;
        const char* text;
        int base;
        std::uint32_t value;
        int end;
        int error;
    } rows[] = {
        {"plain", "42x", 10, 42, 2, 0},
        {"white space and sign in front", " \t\n\v\f\r+7 ", 10, 7, 8, 0},
        {"nothing", "", 10, 0, 0, 0},
        {"no digits", " -x", 10, 0, 0, 0},
        {"two signs", "+-1", 10, 0, 0, 0},
        {"negative", "-5", 10, kLargest, 2, ERANGE},
        {"negative zero", "-0", 10, kLargest, 2, ERANGE},
        {"the largest", "4294967295", 10, kLargest, 10, 0},
        {"one more", "4294967296", 10, kLargest, 10, ERANGE},
        {"far too large, read to its end", "99999999999999999999999999999x", 10, kLargest, 29, ERANGE},
        {"too large, with a small rest", "42949672960000000001", 10, kLargest, 20, ERANGE},
        {"base 0, hexadecimal", "0x1F", 0, 31, 4, 0},
        {"base 0, upper case", "0X1fg", 0, 31, 4, 0},
        {"base 0, octal", "0178", 0, 15, 3, 0},
        {"base 0, zero", "0", 0, 0, 1, 0},
        {"base 0, decimal", "19", 0, 19, 2, 0},
        {"a prefix without digits is the number 0", "0xg", 0, 0, 1, 0},
        {"base 16 skips a prefix", "0xff", 16, 255, 4, 0},
        {"base 16 needs none", "ff", 16, 255, 2, 0},
        {"base 8 knows no prefix", "0x7", 8, 0, 1, 0},
        {"base 2", "1012", 2, 5, 3, 0},
        {"base 36", "zZ{", 36, 35 * 36 + 35, 2, 0},
        {"base 1 reads nothing", "1", 1, 0, 0, 0},
        {"base 37 reads nothing", "1", 37, 0, 0, 0},
        {"a negative base reads nothing", "1", -10, 0, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        errno = EINVAL;
        const char* end = nullptr;
        EXPECT_EQ(ParseUInt32(row.text, &end, row.base), row.value);
        EXPECT_EQ(errno, row.error);
        EXPECT_EQ(end - row.text, row.end);
        EXPECT_EQ(ParseUInt32(row.text, nullptr, row.base), row.value);
    }
}

TEST(ByteText, ParsesFloatsOfTheWholeGrammar) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const struct {
        const char* text;
        float value;
        int end;
        int error;
    } rows[] = {
        {" +1.5e2x", 150, 7, 0},
        {"-.5", -0.5F, 3, 0},
        {"0x1p3", 8, 5, 0},
        {"-inf", -kInfinity, 4, 0},
        {"1e", 1, 1, 0},
        {"x", 0, 0, 0},
        {"", 0, 0, 0},
        {"1,5", 1, 1, 0},
        {"1e39", kInfinity, 4, ERANGE},
        {"1e-60", 0, 5, ERANGE},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        errno = EINVAL;
        const char* end = nullptr;
        EXPECT_EQ(ParseFloat(row.text, &end), row.value);
        EXPECT_EQ(errno, row.error);
        EXPECT_EQ(end - row.text, row.end);
    }
    EXPECT_TRUE(std::isnan(ParseFloat("nan", nullptr)));
}

TEST(ByteText, WhiteSpaceIsSixBytes) {
    std::string found;
    for (int byte = 0; byte < 256; ++byte) {
        if (IsWhiteSpace(static_cast<char>(byte))) found += static_cast<char>(byte);
    }
    EXPECT_EQ(found, "\t\n\v\f\r ");
}

TEST(ByteText, ReadsAlikeInALocaleWithADecimalComma) {
    // Made here, since hardly a machine for builds has one.
    const testing::TemporaryFolder folder;
    const std::string path = folder / "de_DE.UTF-8";
    const std::string command = "localedef -f UTF-8 -i de_DE '" + path + "' >/dev/null 2>&1";
    [[maybe_unused]] const int status = std::system(command.c_str());
    setenv("LOCPATH", folder.Path().c_str(), 1);
    const bool isSet = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    const float byLocale = isSet ? std::strtof("1,5", nullptr) : 0;
    const float value = ParseFloat("1.5", nullptr);
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
    if (!isSet) GTEST_SKIP() << "no locale can be made";
    EXPECT_EQ(byLocale, 1.5F);
    EXPECT_EQ(value, 1.5F);
}

}  // namespace
}  // namespace ZEMA
