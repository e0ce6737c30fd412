#include "storage/PathComponents.h"

#include <gtest/gtest.h>

#include <tuple>

#include "MemoryVolume.h"

namespace ZEMA::testing {
namespace {

TEST(NormalizeComponents, ResolvesDots) {
    const char* rows[][2] = {
        {"a/./b/../c", "a/c"}, {"../x", "../x"}, {"a/../../x", "../x"}, {"../../x/..", "../.."},    {"a/b/../..", ""},
        {"./.", ""},           {"a//b", "a//b"}, {"a//..", "a"},        {"..a/.b/c.", "..a/.b/c."},
    };
    for (const auto& [path, normalized] : rows) {
        BasicArray<String> components;
        SplitPath(path, components);
        NormalizeComponents(components);
        EXPECT_EQ(Bytes(components), normalized) << path;
    }
}

TEST(MatchPattern, TakesTheFirstOccurrence) {
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"ABC", "abc", true},
        {"abc", "ab", false},
        {"", "", true},
        {"a", "", false},
        {"", "*", true},
        {"abc", "**", true},
        {"abc", "a*c", true},
        {"aba", "*a", false},  // the first "a" does not end the name
        {"xABc", "*b*", true},
        {"abc", "*b*d*", false},
        {"aXbXc", "a*x*c", true},
        {"a", "a*a", false},  // what the start took is not there any more
        {"ab", "b*", false},
        {"stra\303\237e.x", "strasse*X", true},  // one letter stands for two
        {"strasse", "*\303\237e", true},
    };
    for (const auto& [name, pattern, matches] : rows) {
        EXPECT_EQ(MatchPattern(FromUtf8(name), FromUtf8(pattern)), matches) << name << " against " << pattern;
    }
}

}  // namespace
}  // namespace ZEMA::testing
