#include "core/AString.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "core/Exception.h"

namespace ZEMA {
namespace {

constexpr std::uint32_t kLongest = npos - 1;

TEST(AString, MakesRoomInSteps) {
    AString text;
    std::vector<std::uint32_t> capacities;
    for (const std::uint32_t requested : {10U, 43U, 300U, 1U}) {
        EXPECT_TRUE(text.Reserve(requested));
        capacities.push_back(text.Capacity());
    }
    // ((r + 1) | 32) - 1 for the request, or for twice what there was.
    EXPECT_EQ(capacities, (std::vector<std::uint32_t>{42, 116, 300, 300}));
    EXPECT_EQ(AString(std::string(40, 'x').c_str()).Capacity(), 40U);
}

TEST(AString, ReserveOnASharedTextMakesExactlyThatRoom) {
    const AString original("abcdef");
    AString kept = original;
    EXPECT_EQ(original.ShareCount(), 1U);
    kept.Reserve(4);
    EXPECT_EQ(kept, "abcd");  // cut to the room
    EXPECT_EQ(kept.Capacity(), 36U);
    EXPECT_EQ(original.ShareCount(), 0U);

    AString discarded = original;
    discarded.Reserve(10, true);
    EXPECT_EQ(discarded, "");
    EXPECT_FALSE(discarded.Reserve(0));
    EXPECT_EQ(discarded.Capacity(), 0U);
    EXPECT_EQ(original, "abcdef");
}

TEST(AString, CopiesShareUntilOneChanges) {
    const struct {
        const char* what;
        void (*change)(AString&);
        const char* changed;
    } rows[] = {
        {"append", [](AString& text) { text.Append("!", 1); }, "abcdef!"},
        {"append itself", [](AString& text) { text.Append(text); }, "abcdefabcdef"},
        {"erase", [](AString& text) { text.Erase(1, 2); }, "adef"},
        {"cut down", [](AString& text) { text.Assign(text, 2, 3); }, "cde"},
        {"assign its own bytes", [](AString& text) { text.Assign(text.Data() + 4, 2); }, "ef"},
        {"assign bytes", [](AString& text) { text.Assign("xy", 2); }, "xy"},
        {"overwrite", [](AString& text) { *text.ResizeForOverwrite(1) = 'z'; }, "z"},
        {"clear", [](AString& text) { text.Clear(); }, ""},
        {"assign nothing of itself", [](AString& text) { text.Assign(text, 7); }, ""},
        {"the whole of itself", [](AString& text) { text.Assign(text); }, "abcdef"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const AString original("abcdef");
        AString copy;
        copy.Assign(original);
        EXPECT_EQ(copy.Data(), original.Data());
        row.change(copy);
        EXPECT_EQ(copy, row.changed);
        EXPECT_EQ(copy.Data()[copy.Length()], 0);
        EXPECT_EQ(original, "abcdef");
        AString alone("abcdef");
        row.change(alone);
        EXPECT_EQ(alone, row.changed);
    }
}

TEST(AString, ClampsRanges) {
    const struct {
        const char* what;
        std::uint32_t p, n;
        const char* assigned;
        const char* erased;
    } rows[] = {
        {"inside", 1, 2, "bc", "ad"},
        {"over the end", 2, 9, "cd", "ab"},
        {"up to the end", 1, npos, "bcd", "a"},
        {"at the end", 4, 1, "", "abcd"},
        {"behind the end", 5, 1, "", "abcd"},
        {"far behind the end", npos, npos, "", "abcd"},
        {"empty", 2, 0, "", "abcd"},
    };
    const AString text("abcd");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        AString assigned("before");
        assigned.Assign(text, row.p, row.n);
        EXPECT_EQ(assigned, row.assigned);
        AString appended("+");
        appended.Append(text, row.p, row.n);
        EXPECT_EQ(appended, ("+" + std::string(row.assigned)).c_str());
        AString erased(text);
        erased.Erase(row.p, row.n);
        EXPECT_EQ(erased, row.erased);
    }
}

TEST(AString, AppendsItsOwnBytesAcrossGrowth) {
    AString text("0123456789");
    for (int turn = 0; turn < 6; ++turn) text.Append(text.Data() + 5, text.Length() - 5);
    EXPECT_EQ(text.Length(), 5U + 5U * 64);
    EXPECT_EQ(text.View().substr(300), "5678956789567895678956789");
}

TEST(AString, RefusesALengthThatNoLongerFits) {
    AString text("abc");
    const char* const data = text.Data();
    EXPECT_THROW(text.Append("", npos - 3), RangeException*);
    EXPECT_THROW(text.Append("", npos), Exception*);
    EXPECT_THROW(text.Reserve(npos), RangeException*);
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(text.Data(), data);
}

TEST(AString, HoldsTheLongestLengthAndNotOneByteMore) {
    AString text;
    try {
        text.ResizeForOverwrite(kLongest);  // address space, of which hardly a page is touched
    } catch (const std::bad_alloc&) {
        GTEST_SKIP() << "no 4 GiB of address space";
    }
    EXPECT_EQ(text.Length(), kLongest);
    EXPECT_EQ(text.Capacity(), kLongest);
    EXPECT_THROW(text.Append("x", 1), RangeException*);
    EXPECT_EQ(text.Length(), kLongest);
}

}  // namespace
}  // namespace ZEMA
