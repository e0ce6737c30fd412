#include "loader/format5/ElementReader.h"

#include <gtest/gtest.h>

#include <array>

#include "LoadedDocument.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA::testing {
namespace {

TEST(Transformations, ComeFromRowsOrFromAxisAndAngle) {
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
        {"t='1,2,3' tx='9'", {1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 2, 3}},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.attributes);
        const RefPointer<XMLDOMAString> node = New<XMLDOMAString>();
        ASSERT_TRUE(node->Parse(Bytes("<Bone " + std::string(one.attributes) + "/>"), nullptr));
        const Matrix4 result = ReadTransformation(*node);
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
