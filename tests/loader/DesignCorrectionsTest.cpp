#include "loader/DesignCorrections.h"

#include <gtest/gtest.h>

#include <cmath>

#include "loader/DesignCatalogue.h"
#include "tests/loader/Texts.h"

namespace ZEMA::testing {
namespace {

// Turns x onto y about the z axis, then moves.
const Matrix4 kPlacement = Matrix4::FromAxisAngle({0, 0, 1}, 90 * kRadiansPerDegree, {1, 2, 3});

RefPointer<StorageScene2::Part> PartOf(std::uint32_t design, std::size_t boneCount = 1) {
    const RefPointer<StorageScene2::Part> part = New<StorageScene2::Part>(design);
    for (std::size_t i = 0; i < boneCount; ++i) {
        part->bones.PushBack(New<StorageScene2::Bone>());
        part->bones.Back()->transformation = kPlacement;
    }
    return part;
}

void ExpectNear(const Matrix4& a, const Matrix4& b) {
    for (std::size_t i = 0; i < a.m.size(); ++i) EXPECT_NEAR(a.m[i], b.m[i], 1e-6F) << "m" << i;
}

bool IsMoved(std::uint32_t design, const Version& brickSet) {
    const RefPointer<StorageScene2::Part> part = PartOf(design);
    CorrectPart(*part, brickSet, nullptr);
    return part->bones[0]->transformation != kPlacement;
}

TEST(DesignCorrections, EndWithTheBrickSetsThatTheyAreFor) {
    const std::uint32_t first = FirstCorrections()[1];
    const std::uint32_t second = SecondCorrections()[0].design;
    const struct {
        Version brickSet;
        bool movesFirst;
        bool movesSecond;
    } rows[] = {
        {Version(), false, false},          {Version(0, 9), false, false},       {Version(1), true, true},
        {Version(68), true, true},          {Version(68, 0, 0, 1), false, true}, {Version(279), false, true},
        {Version(279, 0, 1), false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.brickSet.components[0]);
        EXPECT_EQ(IsMoved(first, row.brickSet), row.movesFirst);
        EXPECT_EQ(IsMoved(second, row.brickSet), row.movesSecond);
        EXPECT_FALSE(IsMoved(CombinedDesign().first, row.brickSet));
    }
}

// With y turned onto -x, a design's own move (0, y, z) becomes (-y, 0, z) in the model.
TEST(DesignCorrections, ActBeforeThePlacement) {
    const RefPointer<StorageScene2::Part> first = PartOf(FirstCorrections()[0]);
    CorrectPart(*first, Version(68), nullptr);
    Matrix4 expected = kPlacement;
    expected.m[14] = 3 - 0.4F;
    ExpectNear(first->bones[0]->transformation, expected);

    Vector3 sums;
    for (const auto& row : SecondCorrections()) {
        SCOPED_TRACE(row.design);
        sums = {sums.x + row.angle, sums.y + row.y, sums.z + row.z};
        const RefPointer<StorageScene2::Part> part = PartOf(row.design, 2);
        CorrectPart(*part, Version(100), nullptr);
        const float s = std::sin(row.angle);
        const float c = std::cos(row.angle);
        ExpectNear(part->bones[0]->transformation, {{0, 1, 0, 0, -c, 0, s, 0, s, 0, c, 0, 1 - row.y, 2, 3 + row.z, 1}});
        EXPECT_EQ(part->bones[1]->transformation, kPlacement) << "only the first bone moves";
    }
    EXPECT_NEAR(sums.x, 0.418879, 1e-6) << "whatever designs have them, the angles and distances are these";
    EXPECT_NEAR(sums.y, 4.1375, 1e-5);
    EXPECT_NEAR(sums.z, 0.149, 1e-6);
    CorrectPart(*PartOf(SecondCorrections()[0].design, 0), Version(1), nullptr);  // no bone, nothing to move
}

// Design 7 has as many pieces as records, each moved one further along x than the one before.
class OneTemplate : public DesignTemplates {
public:
    RefPointer<DesignTemplate> Find(std::uint32_t design) override { return design == 7 ? design7 : nullptr; }
    void AddRecord(float x) { design7->records.PushBack({Matrix4::FromTranslation({x, 0, 0})}); }

    RefPointer<DesignTemplate> design7 = New<DesignTemplate>();
};

TEST(DesignCorrections, DivideAPartByItsTemplate) {
    const RefPointer<OneTemplate> templates = New<OneTemplate>();
    const auto divided = [&](std::uint32_t design, std::size_t boneCount, const Version& brickSet) {
        const RefPointer<StorageScene2::Part> part = PartOf(design, boneCount);
        CorrectPart(*part, brickSet, templates.Get());
        return part;
    };
    templates->AddRecord(1);
    EXPECT_EQ(divided(7, 1, Version(500))->bones[0]->transformation, kPlacement) << "one record divides nothing";
    templates->AddRecord(2);
    EXPECT_EQ(divided(7, 2, Version(500))->bones.Size(), 2U) << "a part of two bones is divided already";
    EXPECT_EQ(divided(8, 1, Version(500))->bones.Size(), 1U) << "another design";
    EXPECT_EQ(divided(7, 1, Version())->bones.Size(), 1U) << "no brick set was named";

    const auto part = divided(7, 1, Version(500));
    ASSERT_EQ(part->bones.Size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {  // x has been turned onto y
        EXPECT_NEAR(part->bones[i]->transformation.m[13], 3 + static_cast<float>(i), 1e-6F);
    }
    EXPECT_EQ(part->bones[1]->part, part.Get());
}

}  // namespace
}  // namespace ZEMA::testing
