#include "core/String.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/core/Utf8.h"

namespace ZEMA {
namespace {

using Pieces = std::vector<std::string>;

TEST(String, SharesThePlatformTextUntilTheFirstChange) {
    const struct {
        const char* what;
        void (*change)(String&);
        const char* changed;
    } rows[] = {
        {"append a text", [](String& text) { text.Append(String("!")); }, "abc!"},
        {"append bytes", [](String& text) { text.Append("!"); }, "abc!"},
        {"append itself", [](String& text) { text.Append(text); }, "abcabc"},
        {"append a number", [](String& text) { text.AppendNumber(42); }, "abc42"},
        {"erase", [](String& text) { text.Erase(1, 1); }, "ac"},
        {"clear", [](String& text) { text.Clear(); }, ""},
        {"assign", [](String& text) { text.Assign("x"); }, "x"},
        {"take in bytes", [](String& text) { text.FromBytes(TextEncoding::Utf8, "yz", 2); }, "yz"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const String original("abc");
        String copy(original);
        EXPECT_EQ(copy.CFString(), original.CFString());
        row.change(copy);
        EXPECT_EQ(Utf8(copy), row.changed);
        EXPECT_EQ(Utf8(original), "abc");
        const String copyOfChanged(copy);
        copy.Append("...");
        row.change(copy);  // once more, on a text that is mutable by now
        EXPECT_EQ(Utf8(copyOfChanged), row.changed);
    }
}

TEST(String, AssigningAMutableTextToItselfKeepsIt) {
    String text("a");
    text.Append("b");
    const CFStringRef held = text.CFString();
    const String& itself = text;
    text.Assign(itself);
    EXPECT_EQ(text.CFString(), held);
    String moved(std::move(text));
    EXPECT_EQ(moved.CFString(), held);
    EXPECT_TRUE(text.IsEmpty());  // NOLINT: what a move leaves behind is promised
}

TEST(String, TakesBytesAsAscii) {
    const AString withZero("ab\0cd", 5);
    EXPECT_EQ(String(withZero).Length(), 2U);  // up to the first zero byte
    String text;
    text.Assign(withZero);
    EXPECT_EQ(text.Length(), 5U);
    text.AssignBytes("xyz", 2);
    EXPECT_EQ(Utf8(text), "xy");

    const String empties[] = {String("caf\xC3\xA9"), String(AString("\x80")), String(AString()),
                              String(static_cast<const char*>(nullptr)), String(static_cast<CFStringRef>(nullptr))};
    for (const String& empty : empties) EXPECT_TRUE(empty.IsEmpty());
    text.Append("\xFF");  // nothing to append either
    EXPECT_EQ(Utf8(text), "xy");
    text.AssignBytes("x\xE9", 2);
    EXPECT_TRUE(text.IsEmpty());
    text.AppendNumber(0x100000007);  // 32 bits of it
    EXPECT_EQ(Utf8(text), "7");
}

TEST(String, ClampsRanges) {
    const struct {
        const char* what;
        std::uint32_t p, n;
        const char* part;
        const char* erased;
    } rows[] = {
        {"inside", 1, 2, "bc", "ad"},
        {"over the end", 2, 9, "cd", "ab"},
        {"up to the end", 3, npos, "d", "abc"},
        {"the whole", 0, 4, "abcd", ""},
        {"at the end", 4, 1, "", "abcd"},
        {"behind the end", 5, 1, "", "abcd"},
        {"far behind the end", npos, npos, "", "abcd"},
        {"empty", 2, 0, "", "abcd"},
    };
    const String text("abcd");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Utf8(String(text, row.p, row.n)), row.part);
        EXPECT_EQ(text.ToAString(TextEncoding::Utf8, row.p, row.n), row.part);
        EXPECT_TRUE(text.EqualsNoCaseAt(row.p, row.n, row.part));
        String erased(text);
        erased.Erase(row.p, row.n);
        EXPECT_EQ(Utf8(erased), row.erased);
    }
    EXPECT_EQ(String("_BC_").CompareNoCase(1, 2, text, 1, 2), 0);
    EXPECT_EQ(String("_BC_").CompareNoCase(1, 2, text, 2, npos), -1);
    EXPECT_EQ(String("_BC_").CompareNoCase(1, 2, text, 1, 0), 1);  // against the empty text
}

TEST(String, OrdersExactlyAndWithoutCase) {
    const struct {
        const char* what;
        const char* a;
        const char* b;
        bool less, lessNoCase, equalNoCase;
    } rows[] = {
        {"upper case is first only exactly", "Banana", "apple", true, false, false},
        {"case alone", "ABC", "abc", true, false, true},
        {"a longer text is greater", "ab", "abc", true, true, false},
        {"the empty text is first", "", "a", true, true, false},
        {"letters fold to lower case", "a_", "aB", false, true, false},
        {"beyond ASCII", "\xC3\x84pfel", "\xC3\xA4PFEL", true, false, true},
        {"full folding", "STRASSE",
         "stra\xC3\x9F"
         "e",
         true, false, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const String a = Text(row.a);
        const String b = Text(row.b);
        EXPECT_EQ(a < b, row.less);
        EXPECT_FALSE(a == b);
        EXPECT_EQ(a.LessNoCase(b), row.lessNoCase);
        EXPECT_EQ(a.EqualsNoCaseAt(0, npos, b), row.equalNoCase);
    }
}

TEST(String, FindsUnitsAndTexts) {
    const String text = Text(
        "x/Stra\xC3\x9F"
        "e/x");  // 10 units
    EXPECT_EQ(text.Find('/'), 1U);
    EXPECT_EQ(text.Find('/', 2), 8U);
    EXPECT_EQ(text.Find('S', 3), npos);
    EXPECT_EQ(text.Find('x', 10), npos);
    EXPECT_EQ(text.Find(0xDF), 6U);
    EXPECT_EQ(text.FindNoCase("STR", 1), 2U);
    EXPECT_EQ(text.FindNoCase("ss"), 6U);
    EXPECT_EQ(text.FindNoCase("STR", 3), npos);
    EXPECT_EQ(text.FindNoCase("", 0), npos);
    EXPECT_EQ(text.FindNoCase("x", npos), npos);
    EXPECT_EQ(text.FindFirstOf("e/"), 1U);
    EXPECT_EQ(text.FindFirstOf("Ee", 2), 7U);
    EXPECT_EQ(text.FindFirstOf("", 0), npos);
    EXPECT_EQ(text.FindFirstOf("s"), npos);
    EXPECT_EQ(text.FindFirstOf("x", 10), npos);
    String far;
    far.AssignBytes(std::string(1000, 'a').c_str(), 1000);
    far.Append("b");
    EXPECT_EQ(far.Find('b', 3), 1000U);

    EXPECT_TRUE(String("box").CharAtIs(npos, 'x'));
    EXPECT_FALSE(String("").CharAtIs(npos, 'x'));
    EXPECT_TRUE(String("box").CharAtIs(0, 'b'));
    EXPECT_FALSE(String("box").CharAtIs(3, 0));
}

TEST(String, Splits) {
    const struct {
        const char* text;
        const char* separator;
        Pieces pieces;
    } rows[] = {
        {"a//b", "/", {"a", "", "b"}},
        {"/", "/", {""}},
        {"", "/", {}},
        {"//", "/", {"", "", ""}},
        {"/a/", "/", {"", "a", ""}},
        {"abc", "/", {"abc"}},
        {"a::b:c", "::", {"a", "b:c"}},
        {"aXa", "x", {"aXa"}},
        {"", "", {}},
        {"a", "", {"a"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        BasicArray<String> pieces;
        pieces.PushBack("left over");
        String(row.text).Split(row.separator, pieces);
        EXPECT_EQ(Utf8(pieces), row.pieces);
        if (std::string(row.separator) == "/") {
            String(row.text).Split('/', pieces);
            EXPECT_EQ(Utf8(pieces), row.pieces);
        }
    }
    BasicArray<String> pieces;
    String("a,b;c,;").Split(',', pieces);
    pieces[1].Split(pieces[2], pieces);  // into the array that holds both
    EXPECT_EQ(Utf8(pieces), (Pieces{"b", "c"}));
}

}  // namespace
}  // namespace ZEMA
