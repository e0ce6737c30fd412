#include "loader/format5/ElementReader.h"

#include <gtest/gtest.h>

#include "LoadedDocument.h"
#include "xml/XMLDOMNodeAString.h"

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

TEST(AttributeReader, StepsOverOneCharacterAfterEveryFloat) {
    const std::pair<const char*, std::vector<float>> rows[] = {
        {"1x2;3", {1, 2, 3}}, {"1,  2 ,3", {1, 2, 9}}, {"1,,3", {1, 9, 3}},
        {"1,x,3", {1, 9, 9}}, {"1.5", {1.5F, 9, 9}},   {"", {9, 9, 9}},
    };
    for (const auto& [text, values] : rows) EXPECT_EQ(Floats(text, 3), values) << text;
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
}

TEST(AttributeReader, ReadsNumberLists) {
    const struct {
        const char* list;
        std::size_t leadingZeros;
        std::vector<unsigned long> numbers;
        bool complete;
    } rows[] = {
        {"", 1, {}, true},
        {"5,6", 1, {0, 5, 6}, true},
        {"1,x,3", 0, {1, 0, 3}, false},
        {",1,,3,", 0, {0, 1, 0, 3}, false},
        {"1,2,", 0, {1, 2}, true},
        {",", 0, {0}, false},
        {"4294967295,4294967296,-1", 0, {4294967295U, 0, 0}, false},
        {"\xC3\xA9\x37,\xC3\xA9", 0, {7, 0}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.list);
        BasicArray<unsigned long> numbers;
        EXPECT_EQ(ReadNumberList(*With(row.list), "v", row.leadingZeros, numbers), row.complete);
        EXPECT_EQ(std::vector<unsigned long>(numbers.begin(), numbers.end()), row.numbers);
    }
}

TEST(AttributeReader, TakesAnEmptyBooleanForFalseAndLeavesOthersAlone) {
    const std::pair<const char*, bool> rows[] = {{"", false}, {"No", false},    {"0", false},
                                                 {"2", true}, {"\u00e9", true}, {"fal\u017fe", false}};
    for (const auto& [text, expected] : rows) {
        bool value = true;
        ReadBool(*With(text), "v", value);
        EXPECT_EQ(value, expected) << text;
    }
}

}  // namespace
}  // namespace ZEMA::testing
