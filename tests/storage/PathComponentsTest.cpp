#include "storage/PathComponents.h"

#include <gtest/gtest.h>

#include "MemoryVolume.h"
#include "storage/MatchPattern.h"

namespace ZEMA::testing {
namespace {

TEST(NormalizeComponents, ResolvesDots) {
    const struct {
        const char* path;
        const char* normalized;
    } rows[] = {
        {"a/./b/../c", "a/c"},
        {"../x", "../x"},
        {"a/../../x", "../x"},
        {"../../x/..", "../.."},
        {"a/b/../..", ""},
        {"./.", ""},
        {"a//b", "a//b"},  // an empty component is one like any other
        {"a//..", "a"},    // and goes like any other
        {"..a/.b/c.", "..a/.b/c."},
    };
    for (const auto& row : rows) {
        BasicArray<String> components;
        SplitPath(row.path, components);
        NormalizeComponents(components);
        EXPECT_EQ(Bytes(components), row.normalized) << row.path;
    }
}

TEST(MatchPattern, TakesTheFirstOccurrence) {
    const struct {
        const char* name;
        const char* pattern;
        bool matches;
    } rows[] = {
        {"ABC", "abc", true},
        {"abc", "ab", false},
        {"", "", true},
        {"a", "", false},
        {"", "*", true},
        {"abc", "**", true},
        {"abc", "a*c", true},
        {"aba", "*a", false},  // the first "a" does not end the name
        {"ba", "*a", true},
        {"abcb", "a*b", false},
        {"xABc", "*b*", true},
        {"abc", "*b*d*", false},
        {"aXbXc", "a*x*c", true},
        {"a", "a*a", false},  // what the start took is not there any more
        {"ab", "b*", false},
        {"stra\xC3\x9F"
         "e",
         "STRASSE", true},
        {"stra\xC3\x9F"
         "e.x",
         "strasse*X", true},  // one letter stands for two
        {"strasse",
         "*\xC3\x9F"
         "e",
         true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(MatchPattern(FromUtf8(row.name), FromUtf8(row.pattern)), row.matches)
            << row.name << " against " << row.pattern;
    }
}

}  // namespace
}  // namespace ZEMA::testing
