// Both kinds of text.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "core/AString.h"
#include "core/Exception.h"
#include "core/String.h"

namespace ZEMA {
namespace {

using namespace std::string_view_literals;

constexpr auto kUtf8 = TextEncoding::Utf8;
constexpr auto kBig = TextEncoding::Utf16BigEndian;
constexpr auto kLittle = TextEncoding::Utf16LittleEndian;
constexpr auto kUnknown = static_cast<TextEncoding>(3);

// The count is of bytes or, in UTF-16, of units.
String Decoded(TextEncoding encoding, std::string_view bytes) {
    const std::size_t unitSize = encoding == kBig || encoding == kLittle ? 2 : 1;
    String text("before");
    text.FromBytes(encoding, bytes.data(), static_cast<std::uint32_t>(bytes.size() / unitSize));
    return text;
}

std::string Utf8(const String& text) {
    return std::string(text.ToAString().View());
}

// A change of "abcdef", alone and as one of two that share it.
template <class T>
struct Change {
    void (*change)(T&);
    const char* changed;
};

template <class T, std::size_t kCount>
void ExpectChanges(const Change<T> (&rows)[kCount]) {
    for (const Change<T>& row : rows) {
        SCOPED_TRACE(row.changed);
        const T original("abcdef");
        T copy;
        copy.Assign(original);
        T alone("abcdef");
        for (T* const text : {&copy, &alone}) {
            row.change(*text);
            const T copyOfChanged(*text);
            row.change(*text);  // once more, on a text that may be changed in place by now
            EXPECT_EQ(copyOfChanged, T(row.changed));
        }
        EXPECT_EQ(original, T("abcdef"));
    }
}

TEST(Texts, ShareUntilOneChanges) {
    ExpectChanges<String>({
        {[](String& text) { text.Append(String("!")); }, "abcdef!"},
        {[](String& text) { text.Append("?"); }, "abcdef?"},
        {[](String& text) { text.Append(text); }, "abcdefabcdef"},
        {[](String& text) { text.AppendNumber(0x100000007); }, "abcdef7"},  // 32 bits of it
        {[](String& text) { text.Erase(1, 4); }, "af"},
        {[](String& text) { text.Clear(); }, ""},
        {[](String& text) { text.Append("\xFF"); }, "abcdef"},
        {[](String& text) { text.Assign(text); }, "abcdef"},
    });
    ExpectChanges<AString>({
        {[](AString& text) { text.Append("!", 1); }, "abcdef!"},
        {[](AString& text) { text.Append(text); }, "abcdefabcdef"},
        {[](AString& text) { text.Erase(1, 2); }, "adef"},
        {[](AString& text) { text.Assign(text, 2, 3); }, "cde"},
        {[](AString& text) { text.Assign(text.Data() + 4, 2); }, "ef"},
        {[](AString& text) { *text.ResizeForOverwrite(1) = 'z'; }, "z"},
        {[](AString& text) { text.Assign(text, 7); }, ""},
        {[](AString& text) { text.Assign(text); }, "abcdef"},
    });
    const String text("abc");
    const AString bytes("abc");
    EXPECT_EQ(String(text).CFString(), text.CFString());
    EXPECT_EQ(AString(bytes).Data(), bytes.Data());
}

TEST(String, TakesBytesAsAscii) {
    const AString withZero("ab\0cd", 5);
    EXPECT_EQ(String(withZero).Length(), 2U);  // up to the first zero byte
    String text;
    text.Assign(withZero);
    EXPECT_EQ(text.Length(), 5U);
    text.AssignBytes("x\xE9", 2);
    const String empties[] = {text, String("caf\xC3\xA9"), String("twenty \x80 ASCII bytes"),
                              String(static_cast<const char*>(nullptr)), String(static_cast<CFStringRef>(nullptr))};
    for (const String& empty : empties) EXPECT_TRUE(empty.IsEmpty());
}

TEST(Texts, ClampRanges) {
    const struct {
        std::uint32_t p, n;
        const char* part;
        const char* erased;
    } rows[] = {{1, 2, "bc", "ad"},    {2, 9, "cd", "ab"},       {1, npos, "bcd", "a"},
                {3, npos, "d", "abc"}, {0, 4, "abcd", ""},       {4, 1, "", "abcd"},
                {5, 1, "", "abcd"},    {npos, npos, "", "abcd"}, {2, 0, "", "abcd"}};
    const String text("abcd");
    const AString bytes("abcd");
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.p << ", " << row.n);
        EXPECT_EQ(Utf8(String(text, row.p, row.n)), row.part);
        EXPECT_TRUE(text.EqualsNoCaseAt(row.p, row.n, row.part));
        String erased(text);
        erased.Erase(row.p, row.n);
        EXPECT_EQ(Utf8(erased), row.erased);

        AString assigned("before");
        assigned.Assign(bytes, row.p, row.n);
        EXPECT_EQ(assigned, row.part);
        AString appended("+");
        appended.Append(bytes, row.p, row.n);
        EXPECT_EQ(appended, "+" + std::string(row.part));
        AString erasedBytes(bytes);
        erasedBytes.Erase(row.p, row.n);
        EXPECT_EQ(erasedBytes, row.erased);
    }
    EXPECT_EQ(String("_BC_").CompareNoCase(1, 2, text, 1, 2), 0);
    EXPECT_EQ(String("_BC_").CompareNoCase(1, 2, text, 2, npos), -1);
    EXPECT_EQ(String("_BC_").CompareNoCase(1, 2, text, 1, 0), 1);  // against the empty text
}

TEST(AString, MakesRoomInSteps) {
    AString text;
    std::vector<std::uint32_t> capacities;
    for (const std::uint32_t requested : {10U, 43U, 300U, 1U}) {
        EXPECT_TRUE(text.Reserve(requested));
        capacities.push_back(text.Capacity());
    }
    // ((r + 1) | 32) - 1 for the request, or for twice what there was.
    EXPECT_EQ(capacities, (std::vector<std::uint32_t>{42, 116, 300, 300}));
    std::string doubled = "0123456789";
    text = AString(doubled.c_str());
    for (int turn = 0; turn < 5; ++turn) {
        text.Append(text);  // its own bytes, which move when they no longer fit
        doubled += doubled;
        EXPECT_EQ(text.View(), doubled);
    }

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

TEST(AString, RefusesALengthThatNoLongerFits) {
    AString text("abc");
    EXPECT_THROW(text.Append("", npos - 3), RangeException*);
    EXPECT_THROW(text.Append("", npos), Exception*);
    EXPECT_THROW(text.Reserve(npos), RangeException*);
    EXPECT_EQ(text, "abc");
}

TEST(String, FindsAndOrdersWithAndWithoutCase) {
    const String text(("x/Strasse/x" + std::string(1000, 'a') + "b").c_str());
    const std::uint32_t found[] = {
        text.Find('/', 2),          text.FindNoCase("STR", 1), text.Find('b', 3),        text.FindFirstOf("Ee", 2),
        text.Find('x', npos),       text.Find('x', 11),        text.Find('Z'),           text.FindNoCase("", 1),
        text.FindNoCase("x", npos), text.FindFirstOf("", 0),   text.FindFirstOf("x", 11)};
    const std::uint32_t expected[] = {9, 2, 1011, 8, npos, npos, npos, npos, npos, npos, npos};
    EXPECT_TRUE(std::ranges::equal(found, expected)) << ::testing::PrintToString(found);
    EXPECT_TRUE(String("box").CharAtIs(npos, 'x'));
    EXPECT_FALSE(String("").CharAtIs(npos, 'x'));

    EXPECT_TRUE(String("Banana") < String("apple"));
    EXPECT_FALSE(String("Banana").LessNoCase("apple"));
    EXPECT_TRUE(!(String("a_") < String("aB")) && String("a_").LessNoCase("aB"));
    EXPECT_TRUE(FromUtf8("\xC3\x84pfel").EqualsNoCaseAt(0, npos, FromUtf8("\xC3\xA4PFEL")));
}

TEST(String, Splits) {
    const struct {
        const char* text;
        const char* separator;
        std::vector<std::string> pieces;
    } rows[] = {
        {"a//b", "/", {"a", "", "b"}},  {"/", "/", {""}},      {"", "/", {}}, {"//", "/", {"", "", ""}},
        {"/a/", "/", {"", "a", ""}},    {"abc", "/", {"abc"}}, {"", "", {}},  {"a", "", {"a"}},
        {"a::b:c", "::", {"a", "b:c"}}, {"aXa", "x", {"aXa"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        // Into the array that holds both.
        BasicArray<String> pieces;
        for (const char* const text : {row.text, row.separator}) pieces.PushBack(text);
        pieces[0].Split(pieces[1], pieces);
        std::vector<std::string> found;
        for (const String& piece : pieces) found.push_back(Utf8(piece));
        EXPECT_EQ(found, row.pieces);
    }
}

TEST(String, DecodesWithoutOneTerminator) {
    const struct {
        const char* what;
        TextEncoding encoding;
        std::string_view bytes, units;  // big-endian
    } rows[] = {
        {"two zero bytes at the end", kUtf8, "ab\0\0"sv, "\0a\0b\0\0"sv},
        {"zero byte inside", kUtf8, "a\0\xC3\xA9"sv, "\0a\0\0\0\xE9"sv},
        {"not UTF-8", kUtf8, "ab\xFF"sv, ""sv},
        {"big-endian", kBig, "\0a\x20\xAC\0\0"sv, "\0a\x20\xAC"sv},
        {"big-endian, a unit that ends in zero", kBig, "\0a\x01\0"sv, "\0a\x01\0"sv},
        {"little-endian, a unit that starts with zero", kLittle, "a\0\0\x01"sv, "\0a\x01\0"sv},
        {"little-endian, terminator alone", kLittle, "\0\0"sv, ""sv},
        {"unknown encoding", kUnknown, "ab"sv, ""sv},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Decoded(row.encoding, row.bytes).ToAString(kBig), row.units);
    }
}

TEST(String, EncodesIntoTheRoomThatIsPromised) {
    const struct {
        const char* what;
        std::string_view units;  // big-endian
        TextEncoding encoding;
        std::string_view bytes;
        std::uint32_t capacity;
    } rows[] = {
        {"UTF-8", "\0a\x20\xAC\0\0\0b"sv, kUtf8, "a\xE2\x82\xAC"sv, ((6 * 4 + 2) | 32) - 1},  // up to the zero unit
        {"half a pair is no UTF-8", "\0a\xD8\x3D"sv, kUtf8, ""sv, ((6 * 2 + 2) | 32) - 1},
        {"half a pair is a unit", "\0a\xD8\x3D"sv, kBig, "\0a\xD8\x3D"sv, ((2 * 2 + 2) | 32) - 1},
        {"little-endian", "\0a\x20\xAC"sv, kLittle, "a\0\xAC\x20"sv, ((2 * 2 + 2) | 32) - 1},
        {"unknown encoding", "\0a"sv, kUnknown, ""sv, 34},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const AString bytes = Decoded(kBig, row.units).ToAString(row.encoding);
        EXPECT_EQ(bytes, row.bytes);
        EXPECT_EQ(bytes.Capacity(), row.capacity);
        EXPECT_EQ(bytes.Data()[bytes.Length() + (row.encoding == kBig || row.encoding == kLittle ? 1 : 0)],
                  0);  // a whole unit of zero
    }
}

}  // namespace
}  // namespace ZEMA
