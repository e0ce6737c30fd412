#include "scene/StorageScene.h"

#include <gtest/gtest.h>

namespace ZEMA::testing {
namespace {

TEST(StorageScene, ReleasesEverythingThoughAssembliesAndFlexesPointBack) {
    auto scene = New<StorageScene>();
    const auto assembly = New<StorageScene::Assembly>();
    const auto flex = New<StorageScene::Flex>();
    const auto part = New<StorageScene::Part>();
    const auto group = New<StorageScene::Rigid>();
    part->assembly = assembly;
    part->flex = flex;
    assembly->parts.PushBack(part.Get());
    flex->parts.PushBack(part.Get());
    group->parts.PushBack(part);
    scene->models.PushBack({});
    scene->models[0].rigids.PushBack(group);
    scene->models[0].joints.PushBack({});
    scene->models[0].joints[0].rigid1 = group;
    scene.Reset();
    EXPECT_EQ(group->ReferenceCount(), 1);
    EXPECT_EQ(part->ReferenceCount(), 2) << "held here and by its group";
    EXPECT_EQ(assembly->ReferenceCount(), 2) << "held here and by its part";
    EXPECT_EQ(flex->ReferenceCount(), 2);
}

TEST(StorageScene, ClearsAllButMetadataAndCamera) {
    const auto scene = New<StorageScene>();
    scene->name = "name";
    scene->camera = New<StorageScene2::Camera>();
    scene->cameras.PushBack(scene->camera);
    scene->models.PushBack({});
    scene->buildingInstructions.PushBack({});
    scene->meta.PushBack({});
    scene->selections.PushBack({});
    scene->Clear();
    EXPECT_TRUE(scene->name.IsEmpty());
    EXPECT_TRUE(scene->cameras.Empty() && scene->models.Empty() && scene->buildingInstructions.Empty());
    EXPECT_TRUE(scene->selections.Empty());
    EXPECT_EQ(scene->meta.Size(), 1U);
    EXPECT_EQ(scene->camera->ReferenceCount(), 1);
}

}  // namespace
}  // namespace ZEMA::testing
