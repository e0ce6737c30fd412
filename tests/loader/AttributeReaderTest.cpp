#include "loader/AttributeReader.h"

#include <gtest/gtest.h>

#include "LoadedDocument.h"
#include "xml/XMLDOMAString.h"

namespace ZEMA::testing {
namespace {

// An element with one attribute, "v".
RefPointer<XMLDOMAString> With(const std::string& value) {
    const RefPointer<XMLDOMAString> node = New<XMLDOMAString>();
    node->SetAttribute("v", Bytes(value));
    return node;
}

std::vector<float> Floats(const std::string& text, std::size_t count) {
    std::vector<float> values(count, 9.0F);
    ScanFloats(Bytes(text), values);
    return values;
}

std::vector<unsigned long> Numbers(const std::string& list, std::size_t leadingZeros, bool& complete) {
    BasicArray<unsigned long> numbers;
    complete = ReadNumberList(*With(list), "v", leadingZeros, numbers);
    return {numbers.begin(), numbers.end()};
}

TEST(AttributeReader, StepsOverOneCharacterAfterEveryFloat) {
    const struct {
        const char* what;
        const char* text;
        std::vector<float> values;
    } rows[] = {
        {"any separator will do", "1x2;3", {1, 2, 3}},
        {"blanks before a number belong to it", "1,  2 ,3", {1, 2, 9}},
        {"an unreadable number stays as it was", "1,,3", {1, 9, 3}},
        {"a letter takes up one number and its separator another", "1,x,3", {1, 9, 9}},
        {"a short list leaves the rest", "1.5", {1.5F, 9, 9}},
        {"an empty one leaves all", "", {9, 9, 9}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Floats(row.text, 3), row.values);
    }
}

// The texts differ only in a separator that is not ASCII, which the scans in place cannot read.
TEST(AttributeReader, ReadsAsciiTextAsItReadsAnyOther) {
    const char* patterns[] = {"1@2@3", "1@x@3", "@@3", "-1.5e1@  2@.5", "1e@2@3", "4@nan@5", "+1@2@3", "1 @2@3"};
    for (const std::string pattern : patterns) {
        std::string other = pattern;
        for (std::size_t at = 0; (at = other.find('@', at)) != std::string::npos; at += 2)
            other.replace(at, 1, "\u00b7");
        EXPECT_EQ(Floats(pattern, 3), Floats(other, 3)) << pattern;
    }
    std::uint32_t ascii = 0;
    std::uint32_t other = 0;
    EXPECT_TRUE(ScanUnsigned("no. 12", ascii));
    EXPECT_TRUE(ScanUnsigned("n\u00ba 12", other));
    EXPECT_EQ(ascii, 12U);
    EXPECT_EQ(other, 12U);
    EXPECT_FALSE(ScanUnsigned("n\u00ba", other));
}

TEST(AttributeReader, ReadsNumberLists) {
    const struct {
        const char* what;
        const char* list;
        std::size_t leadingZeros;
        std::vector<unsigned long> numbers;
        bool complete;
    } rows[] = {
        {"an empty one adds nothing, not even the zero in front", "", 1, {}, true},
        {"the zero comes in front", "5,6", 1, {0, 5, 6}, true},
        {"what cannot be read is 0", "1,x,3", 0, {1, 0, 3}, false},
        {"between two commas stands an unreadable number", "1,,3", 0, {1, 0, 3}, false},
        {"so it does before a comma at the start", ",1", 0, {0, 1}, false},
        {"but not behind one at the end", "1,2,", 0, {1, 2}, true},
        {"a lone comma has one before it", ",", 0, {0}, false},
        {"a number has 32 bits and no sign", "4294967295,4294967296,-1", 0, {4294967295U, 0, 0}, false},
        {"text that is not ASCII",
         "\u00e9"
         "7,\u00e9",
         0,
         {7, 0},
         false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        bool complete = false;
        EXPECT_EQ(Numbers(row.list, row.leadingZeros, complete), row.numbers);
        EXPECT_EQ(complete, row.complete);
    }
}

TEST(AttributeReader, TakesAnEmptyBooleanForFalseAndLeavesOthersAlone) {
    const struct {
        const char* text;
        bool value;  // from true
    } rows[] = {{"", false},      {"No", false}, {"0", false},         {"2", true},
                {"\u00e9", true}, {"YES", true}, {"fal\u017fe", false}};
    for (const auto& row : rows) {
        bool value = true;
        ReadBool(*With(row.text), "v", value);
        EXPECT_EQ(value, row.value) << row.text;
    }
    bool value = true;
    ReadBool(*With("0"), "V", value);
    EXPECT_TRUE(value) << "names are matched exactly";
}

}  // namespace
}  // namespace ZEMA::testing
