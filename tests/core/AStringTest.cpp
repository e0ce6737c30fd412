#include "core/AString.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/Exception.h"

namespace ZEMA {
namespace {

TEST(AString, MakesRoomInSteps) {
    AString text;
    std::vector<std::uint32_t> capacities;
    for (const std::uint32_t requested : {10U, 43U, 300U, 1U}) {
        EXPECT_TRUE(text.Reserve(requested));
        capacities.push_back(text.Capacity());
    }
    // ((r + 1) | 32) - 1 for the request, or for twice what there was.
    EXPECT_EQ(capacities, (std::vector<std::uint32_t>{42, 116, 300, 300}));
    text = "0123456789";
    for (int turn = 0; turn < 4; ++turn) text.Append(text);  // its own bytes, which move
    EXPECT_EQ(text.View().substr(80, 10), "0123456789");

    const AString original("abcdef");
    AString copy = original;
    copy.Reserve(4);
    EXPECT_EQ(copy, "abcd");  // a shared text is cut to the room
    EXPECT_EQ(copy.Capacity(), 36U);
    copy = original;
    copy.Reserve(10, true);
    EXPECT_EQ(copy, "");
    EXPECT_FALSE(copy.Reserve(0));
}

TEST(AString, CopiesShareUntilOneChanges) {
    const struct {
        void (*change)(AString&);
        const char* changed;
    } rows[] = {
        {[](AString& text) { text.Append("!", 1); }, "abcdef!"},
        {[](AString& text) { text.Append(text); }, "abcdefabcdef"},
        {[](AString& text) { text.Erase(1, 2); }, "adef"},
        {[](AString& text) { text.Assign(text, 2, 3); }, "cde"},
        {[](AString& text) { text.Assign(text.Data() + 4, 2); }, "ef"},
        {[](AString& text) { *text.ResizeForOverwrite(1) = 'z'; }, "z"},
        {[](AString& text) { text.Assign(text, 7); }, ""},
        {[](AString& text) { text.Assign(text); }, "abcdef"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.changed);
        const AString original("abcdef");
        AString copy;
        copy.Assign(original);
        EXPECT_EQ(copy.Data(), original.Data());
        AString alone("abcdef");
        for (AString* const text : {&copy, &alone}) {
            row.change(*text);
            EXPECT_EQ(*text, row.changed);
            EXPECT_EQ(text->Data()[text->Length()], 0);
        }
        EXPECT_EQ(original, "abcdef");
    }
}

TEST(AString, ClampsRanges) {
    const struct {
        std::uint32_t p, n;
        const char* taken;
        const char* erased;
    } rows[] = {{1, 2, "bc", "ad"}, {2, 9, "cd", "ab"},       {1, npos, "bcd", "a"}, {4, 1, "", "abcd"},
                {5, 1, "", "abcd"}, {npos, npos, "", "abcd"}, {2, 0, "", "abcd"}};
    const AString text("abcd");
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.p << ", " << row.n);
        AString assigned("before");
        assigned.Assign(text, row.p, row.n);
        EXPECT_EQ(assigned, row.taken);
        AString appended("+");
        appended.Append(text, row.p, row.n);
        EXPECT_EQ(appended, "+" + std::string(row.taken));
        AString erased(text);
        erased.Erase(row.p, row.n);
        EXPECT_EQ(erased, row.erased);
    }
}

TEST(AString, RefusesALengthThatNoLongerFits) {
    AString text("abc");
    EXPECT_THROW(text.Append("", npos - 3), RangeException*);
    EXPECT_THROW(text.Append("", npos), Exception*);
    EXPECT_THROW(text.Reserve(npos), RangeException*);
    EXPECT_EQ(text, "abc");
}

}  // namespace
}  // namespace ZEMA
