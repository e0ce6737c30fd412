#include "loader/Version.h"

#include <gtest/gtest.h>

#include "LoadedDocument.h"

namespace ZEMA::testing {
namespace {

TEST(Version, ComparesComponentsAsNumbers) {
    EXPECT_LT(Version(1, 2), Version(1, 10));
    EXPECT_LT(Version(9, 9, 9, 9), Version(10));
    EXPECT_LE(Version(68), Version(68));
    EXPECT_FALSE(Version(68, 0, 0, 1) <= Version(68));
    EXPECT_NE(Version(5), Version(5, 0, 0, 1));
}

TEST(Version, IsWrittenWithoutZerosAtTheEnd) {
    const std::pair<Version, std::string> rows[] = {{Version(), "0"},
                                                    {Version(4, 1), "4.1"},
                                                    {Version(4, 0, 2), "4.0.2"},
                                                    {Version(4, 0, 0, 1), "4.0.0.1"},
                                                    {Version(4294967295U, 0, 3), "4294967295.0.3"}};
    for (const auto& [version, text] : rows) {
        String out("v");
        version.AppendTo(out);
        EXPECT_EQ(Utf8(out), "v" + text);
    }
}

TEST(Version, IsReadUpToFourNumbers) {
    const struct {
        const char* what;
        const char* text;
        bool succeeds;
        Version version;  // from 9.9.9.9
        std::uint32_t end;
    } rows[] = {
        {"components that are not reached stay", "68", true, Version(68, 9, 9, 9), 2},
        {"all four", "1.2.3.4", true, Version(1, 2, 3, 4), 7},
        {"a fifth is left alone", "1.2.3.4.5", true, Version(1, 2, 3, 4), 7},
        {"anything but a point ends it", "1.2-3", true, Version(1, 2, 9, 9), 3},
        {"a point needs a number behind it", "1.2.", false, Version(1, 2, 9, 9), 4},
        {"no number at all", "beta", false, Version(9, 9, 9, 9), 0},
        {"a number that does not fit", "1.4294967296", false, Version(1, 9, 9, 9), 12},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Version version(9, 9, 9, 9);
        std::uint32_t position = 0;
        EXPECT_EQ(version.ParseFrom(String(row.text), position), row.succeeds);
        EXPECT_EQ(version, row.version);
        EXPECT_EQ(position, row.end);
    }
}

}  // namespace
}  // namespace ZEMA::testing
