#include "loader/Version.h"

#include <gtest/gtest.h>

#include "tests/loader/Texts.h"

namespace ZEMA::testing {
namespace {

TEST(Version, ComparesComponentsAsNumbers) {
    EXPECT_LT(Version(1, 2), Version(1, 10));
    EXPECT_LT(Version(9, 9, 9, 9), Version(10));
    EXPECT_FALSE(Version(68, 0, 0, 1) <= Version(68));
}

TEST(Version, IsWrittenWithoutZerosAtTheEnd) {
    String out;
    for (const Version& version : {Version(), Version(4, 1), Version(4, 0, 2), Version(4294967295U, 0, 0, 1)}) {
        version.AppendTo(out);
        out.Append(" ");
    }
    EXPECT_EQ(Utf8(out), "0 4.1 4.0.2 4294967295.0.0.1 ");
}

TEST(Version, IsReadUpToFourNumbers) {
    const struct {
        const char* text;
        bool succeeds;
        Version version;  // from 9.9.9.9: components that are not reached stay
        std::uint32_t end;
    } rows[] = {{"68", true, Version(68, 9, 9, 9), 2},   {"1.2.3.4.5", true, Version(1, 2, 3, 4), 7},
                {"1.2-3", true, Version(1, 2, 9, 9), 3}, {"1.2.", false, Version(1, 2, 9, 9), 4},
                {"beta", false, Version(9, 9, 9, 9), 0}, {"1.4294967296", false, Version(1, 9, 9, 9), 12}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        Version version(9, 9, 9, 9);
        std::uint32_t position = 0;
        EXPECT_EQ(version.ParseFrom(String(row.text), position), row.succeeds);
        EXPECT_EQ(version, row.version);
        EXPECT_EQ(position, row.end);
    }
}

}  // namespace
}  // namespace ZEMA::testing
