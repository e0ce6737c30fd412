#include "loader/DesignCorrections.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "LoadedDocument.h"
#include "loader/DesignCatalogue.h"

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

TEST(DesignCatalogue, HasEveryTableAndItsSpecialRows) {
    EXPECT_EQ(DesignSubstitutions().size(), 21U);
    EXPECT_EQ(FirstCorrections().size(), 2U);
    EXPECT_EQ(SecondCorrections().size(), 16U);
    const auto retiredAgain = [](const auto& row) { return SubstituteDesign(row.newDesign) != row.newDesign; };
    const auto combined = [](const auto& row) { return row.newDesign == CombinedDesign().combined; };
    const auto corrected = [](const auto& row) { return FindSecondCorrection(row.newDesign) != nullptr; };
    EXPECT_EQ(std::ranges::count_if(DesignSubstitutions(), retiredAgain), 1);
    EXPECT_EQ(std::ranges::count_if(DesignSubstitutions(), combined), 1);
    EXPECT_TRUE(std::ranges::any_of(DesignSubstitutions(), corrected));
}

TEST(DesignCatalogue, IsSearchedByDesign) {
    for (const auto& row : DesignSubstitutions()) EXPECT_EQ(SubstituteDesign(row.oldDesign), row.newDesign);
    for (const std::uint32_t design : {0U, 1U, CombinedDesign().first, 4294967295U}) {
        EXPECT_EQ(SubstituteDesign(design), design);
        EXPECT_FALSE(NeedsFirstCorrection(design));
        EXPECT_EQ(FindSecondCorrection(design), nullptr);
    }
}

TEST(DesignCorrections, EndWithTheBrickSetsThatTheyAreFor) {
    const std::uint32_t first = FirstCorrections()[1];
    const std::uint32_t second = SecondCorrections()[0].design;
    const struct {
        const char* what;
        Version brickSet;
        bool movesFirst;
        bool movesSecond;
    } rows[] = {
        {"none was named", Version(), false, false},
        {"a first number of 0 names none", Version(0, 9), false, false},
        {"the oldest", Version(1), true, true},
        {"the last of the first set", Version(68), true, true},
        {"just after it", Version(68, 0, 0, 1), false, true},
        {"the last of the second set", Version(279), false, true},
        {"just after it", Version(279, 0, 1), false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
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

    for (const auto& row : SecondCorrections()) {
        SCOPED_TRACE(row.design);
        const RefPointer<StorageScene2::Part> part = PartOf(row.design, 2);
        CorrectPart(*part, Version(100), nullptr);
        const float s = std::sin(row.angle);
        const float c = std::cos(row.angle);
        ExpectNear(part->bones[0]->transformation, {{0, 1, 0, 0, -c, 0, s, 0, s, 0, c, 0, 1 - row.y, 2, 3 + row.z, 1}});
        EXPECT_EQ(part->bones[1]->transformation, kPlacement) << "only the first bone moves";
    }
    CorrectPart(*PartOf(SecondCorrections()[0].design, 0), Version(1), nullptr);  // no bone, nothing to move
}

// One design, of `count` pieces, each moved one further along x.
class OneTemplate : public DesignTemplates {
public:
    OneTemplate(std::uint32_t design, std::size_t count) : design_(design), template_(New<DesignTemplate>()) {
        for (std::size_t i = 1; i <= count; ++i) {
            template_->records.PushBack({Matrix4::FromTranslation({static_cast<float>(i), 0, 0})});
        }
    }
    RefPointer<DesignTemplate> Find(std::uint32_t design) override {
        return design == design_ ? template_ : RefPointer<DesignTemplate>();
    }

private:
    std::uint32_t design_;
    RefPointer<DesignTemplate> template_;
};

TEST(DesignCorrections, DivideAPartByItsTemplate) {
    const struct {
        const char* what;
        std::uint32_t design;
        std::size_t recordCount;
        std::size_t boneCount;
        Version brickSet;
        std::size_t bonesAfter;
        float moved;  // of the first bone, along the model's y
    } rows[] = {
        {"a bone for each record", 7, 3, 1, Version(500), 3, 1},
        {"one record divides nothing", 7, 1, 1, Version(500), 1, 0},
        {"a part of two bones is divided already", 7, 3, 2, Version(500), 2, 0},
        {"another design", 8, 3, 1, Version(500), 1, 0},
        {"no brick set was named", 7, 3, 1, Version(), 1, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const RefPointer<StorageScene2::Part> part = PartOf(row.design, row.boneCount);
        CorrectPart(*part, row.brickSet, New<OneTemplate>(7U, row.recordCount).Get());
        ASSERT_EQ(part->bones.Size(), row.bonesAfter);
        EXPECT_NEAR(part->bones[0]->transformation.m[13], 2 + row.moved, 1e-6F);
        if (row.bonesAfter < 3) continue;
        EXPECT_NEAR(part->bones[2]->transformation.m[13], 5, 1e-6F);
        EXPECT_EQ(part->bones[2]->part, part.Get());
    }
}

}  // namespace
}  // namespace ZEMA::testing
