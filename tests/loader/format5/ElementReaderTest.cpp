#include "loader/format5/ElementReader.h"

#include <gtest/gtest.h>

#include <array>

#include "LoadedDocument.h"

namespace ZEMA::testing {
namespace {

RefPointer<XMLDOMAString> Element(const std::string& attributes) {
    const RefPointer<XMLDOMAString> node = New<XMLDOMAString>();
    EXPECT_TRUE(node->Parse(Bytes("<e " + attributes + "/>"), nullptr));
    return node;
}

std::vector<float> Floats(const std::string& text) {
    std::vector<float> values(3, 9.0F);
    ScanFloats(Bytes(text), values);
    return values;
}

TEST(ElementReader, StepsOverOneCharacterAfterEveryFloat) {
    const std::pair<const char*, std::vector<float>> rows[] = {
        {"1x2;3", {1, 2, 3}},
        {"1,  2 ,3", {1, 2, 9}},
        {"1,,3", {1, 9, 3}},
        {"1,x,3", {1, 9, 9}},
        {"1.5", {1.5F, 9, 9}},
        {"", {9, 9, 9}},
        {"-1.5e1\u00b7x\u00b73", {-15, 9, 9}},
        {"1e\u00b7 2\u00b7.5", {1, 9, 2}},
        {"\u00b72\u00b7nan", {9, 2, 9}},
    };
    for (const auto& [text, values] : rows) EXPECT_EQ(Floats(text), values) << text;
}

TEST(ElementReader, ReadsNumberLists) {
    const struct {
        const char* list;
        std::size_t leadingZeros;
        Numbers numbers;
        bool complete;
    } rows[] = {
        {"", 1, {}, true},
        {"5,6", 1, {0, 5, 6}, true},
        {"1,x,3", 0, {1, 0, 3}, false},
        {",1,,3,", 0, {0, 1, 0, 3}, false},
        {"1,2,", 0, {1, 2}, true},
        {",", 0, {0}, false},
        {"4294967295, 010", 0, {4294967295U, 10}, true},
        {"4294967296", 0, {0}, false},
        {"-1", 0, {0}, false},
        {"\xC3\xA9\x37,\xC3\xA9", 0, {7, 0}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.list);
        BasicArray<unsigned long> numbers;
        const auto node = Element("v='" + std::string(row.list) + "'");
        EXPECT_EQ(ReadNumberList(*node, "v", row.leadingZeros, numbers), row.complete);
        EXPECT_EQ(NumbersOf(numbers), row.numbers);
    }
}

TEST(ElementReader, TakesAnEmptyBooleanForFalseAndLeavesOthersAlone) {
    const std::pair<const char*, bool> rows[] = {{"v=''", false}, {"v='No'", false},    {"v='0'", false},
                                                 {"v='2'", true}, {"v='\u00e9'", true}, {"v='fal\u017fe'", false},
                                                 {"V='0'", true}};
    for (const auto& [attributes, expected] : rows) {
        bool value = true;
        ReadBool(*Element(attributes), "v", value);
        EXPECT_EQ(value, expected) << attributes;
    }
}

TEST(ElementReader, ReadsAVectorFromOneAttributeOrThree) {
    const std::pair<const char*, Vector3> rows[] = {
        {"v='1,2'", {1, 2, 7}},        {"v='1,2,3' vx='9'", {1, 2, 3}}, {"vz='3' vx='1'", {1, 7, 3}},
        {"vbx='9' vx='1'", {1, 7, 7}}, {"bx='9' x='9'", {7, 7, 7}},     {"Vy='9' vy='2'", {7, 2, 7}},
        {"v='' vx='9'", {7, 7, 7}},    {"vx='x' vy='2 3'", {7, 2, 7}},
    };
    for (const auto& [attributes, expected] : rows) {
        Vector3 value{7, 7, 7};
        ReadVector3(*Element(attributes), "v", value);
        EXPECT_EQ(value, expected) << attributes;
    }
}

TEST(ElementReader, TakesAPlacementFromRowsOrFromAxisAndAngle) {
    const struct {
        const char* attributes;
        std::array<float, 12> rows;  // three rows of the rotation, then the translation
    } cases[] = {
        {"", {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}},
        {"transformation='0,2,0,-3,4,0,0,0,.5,1,2,3'", {0, 1, 0, -.6F, .8F, 0, 0, 0, 1, 1, 2, 3}},
        {"transformation='0,0,0,0,1,0,1,0,0,5,6,7'", {1, 0, 0, 0, 1, 0, 0, 0, 1, 5, 6, 7}},
        {"transformation='1,0,0,0,0,1,0,-1,0,1,2,3' a='0,0,1' angle='90' t='9,9,9'",
         {1, 0, 0, 0, 0, 1, 0, -1, 0, 1, 2, 3}},
        {"transformation='0,1,0,-1,0'", {0, 1, 0, -1, 0, 0, 0, 0, 1, 0, 0, 0}},
        {"angle='90'", {0, 0, -1, 0, 1, 0, 1, 0, 0, 0, 0, 0}},
        {"angle='90' ax='3' ay='0' tx='1' tz='-2'", {1, 0, 0, 0, 0, 1, 0, -1, 0, 1, 0, -2}},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.attributes);
        const Matrix4 result = ReadTransformation(*Element(one.attributes));
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t column = 0; column < 3; ++column) {
                EXPECT_NEAR(result.m[row * 4 + column], one.rows[row * 3 + column], 1e-6F) << row << ", " << column;
            }
            EXPECT_EQ(result.m[row * 4 + 3], row == 3 ? 1.0F : 0.0F);
        }
    }
}

}  // namespace
}  // namespace ZEMA::testing
