#include "core/ByteText.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <limits>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace ZEMA {
namespace {

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
