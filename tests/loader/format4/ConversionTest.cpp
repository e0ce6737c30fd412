// What becomes of a format-4 scene beyond what its document shows.
#include <gtest/gtest.h>

#include <utility>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

std::string FlexPart(int refID, int controlPoint, const std::string& attributes = "") {
    return Part(refID, "flexRefID='1' controlPoint='" + std::to_string(controlPoint) + "' " + attributes);
}

RefPointer<StorageScene2> Converted(const LoadedScene& loaded) {
    const auto target = New<StorageScene2>();
    loaded.loader->Convert(loaded.scene.Get(), target.Get());
    return target;
}

// What the first step of the first instruction holds.
const BasicArray<RefPointer<StorageScene2::BIEvent>>& EventsOf(const StorageScene2& scene) {
    return static_cast<const StorageScene2::BIStep&>(*scene.buildingInstructions[0].events[0]).events;
}

TEST(Conversion, SanitisesPlacements) {
    const LoadedScene loaded(Root(Group(Part(1, "tx='1'")) + Instruction(Step("", PartRef(1, "exploded=''")))));
    auto& group = loaded.Group(0).transformation;
    group.m[0] = 0;
    auto& part = loaded.Part(0).transformation;
    part.m[5] = 3;
    loaded->buildingInstructions[0].steps[0]->parts[0].transformation.m[10] = -2;
    const RefPointer<StorageScene2> target = Converted(loaded);
    EXPECT_EQ(group, Matrix4()) << "in the old scene, too";
    EXPECT_EQ(part, Matrix4::FromTranslation({1, 0, 0}));
    const StorageScene2::Rigid& rigid = *target->rigidSystems[0].rigids[0];
    EXPECT_EQ(rigid.transformation, Matrix4());
    EXPECT_EQ(rigid.bones[0]->transformation, Matrix4::FromTranslation({1, 0, 0}));
    EXPECT_EQ(static_cast<const StorageScene2::BIPart&>(*EventsOf(*target)[0]).transformation.m[10], -1);
}

TEST(Conversion, ExchangesCamerasAndMetadata) {
    const LoadedScene loaded(
        Root("<Meta><Brand/></Meta><Cameras><Camera refID='1'/></Cameras><Scene cameraRefID='1'/>"));
    const RefPointer<StorageScene2::Camera> camera = loaded->cameras[0];
    const auto target = New<StorageScene2>();
    target->meta.Resize(2);
    loaded->name = "name";
    loaded.loader->Convert(loaded.scene.Get(), target.Get());
    EXPECT_EQ(target->cameras[0], camera);
    EXPECT_EQ(target->bricksCamera, camera);
    EXPECT_EQ(Utf8(target->name), "name");
    EXPECT_EQ(target->meta.Size(), 1U);
    EXPECT_EQ(loaded->meta.Size(), 2U);
    EXPECT_TRUE(loaded->cameras.Empty());
}

// The same objects a second time, their control points exchanged: what a table kept would be found again.
TEST(Conversion, StartsWithEmptyTables) {
    const LoadedScene loaded(Root(Group(Part(1) + FlexPart(2, 0, "assemblyRefID='1' assemblyID='2'") +
                                        FlexPart(3, 1, "assemblyRefID='1' assemblyID='2'")) +
                                  Instruction(Step("", PartRef(2)))));
    ModelLoaderWQFML4& loader = *loaded.loader;
    const RefPointer<StorageScene2> first = Converted(loaded);
    auto& points = loaded.Part(1).flex->parts;
    std::swap(points[0], points[1]);
    const RefPointer<StorageScene2> second = Converted(loaded);
    ASSERT_EQ(second->bricks.Size(), 2U);
    const StorageScene2::Part& part = *second->bricks[1]->parts[0];
    EXPECT_EQ(part.bones[0], second->rigidSystems[0].rigids[0]->bones[2]);
    EXPECT_EQ(EventsOf(*second).Size(), 1U);
    EXPECT_EQ(loader.partParts.Size(), 3U) << "they keep their contents";
    EXPECT_EQ(loader.placedFlexes.Size(), 1U);

    EXPECT_TRUE(loader.Load(Bytes(Root("")), New<StorageScene2>().Get(), 0));
    EXPECT_TRUE(loader.partParts.Empty() && loader.flexParts.Empty() && loader.assemblyBricks.Empty());
    EXPECT_TRUE(loader.placedFlexes.Empty());
}

}  // namespace
}  // namespace ZEMA::testing
