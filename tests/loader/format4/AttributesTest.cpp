#include "loader/ModelLoaderWQFML4Attributes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ZEMA::testing {
namespace {

using WQFML4::Attribute;

TEST(Format4Attributes, ReadsNumbers) {
    const struct {
        const char* what;
        const char* text;
        std::uint32_t number;
        float fraction;
    } rows[] = {
        {"digits", "12", 12, 12},
        {"white space before them", " \n12", 12, 12},
        {"something behind them", "12x", 12, 12},
        {"no digits", "x", 0, 0},
        {"nothing", "", 0, 0},
        {"decimal, whatever it looks like", "012", 12, 12},
        {"the largest", "4294967295", 4294967295, 4294967295.0F},
        {"too large", "4294967296", 4294967295, 4294967296.0F},
        {"negative", "-1", 4294967295, -1},
        {"with a fraction", "1.5e1", 1, 15},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Attribute attribute{"name", row.text};
        EXPECT_EQ(attribute.UInt32(), row.number);
        EXPECT_EQ(attribute.Float(), row.fraction);
    }
}

TEST(Format4Attributes, PlacesInDegrees) {
    WQFML4::Placement placement;
    EXPECT_EQ(placement.Transformation(), Matrix4());
    for (const Attribute& attribute : {Attribute{"angle", "90"}, {"tx", "1"}, {"tz", "3"}, {"unknown", "7"}}) {
        placement.Read(attribute);
    }
    const Matrix4 aboutY = placement.Transformation();
    EXPECT_NEAR(aboutY.m[2], -1, 1e-6);
    EXPECT_NEAR(aboutY.m[8], 1, 1e-6);
    EXPECT_EQ(aboutY.Translation(), (Vector3{1, 0, 3}));
    for (const Attribute& attribute : {Attribute{"ax", "0.5"}, {"ay", "0"}, {"az", "0"}}) placement.Read(attribute);
    EXPECT_NEAR(placement.Transformation().m[6], 1, 1e-6) << "the axis gets length 1";
}

}  // namespace
}  // namespace ZEMA::testing
