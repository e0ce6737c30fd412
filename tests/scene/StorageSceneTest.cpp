#include "scene/StorageScene.h"

#include <gtest/gtest.h>

namespace ZEMA::testing {
namespace {

TEST(StorageScene, JointStartsWithItsDefaults) {
    const StorageScene::Joint joint;
    for (const Vector3& a : {joint.a1, joint.a2}) EXPECT_EQ(a, (Vector3{0, 1, 0}));
    for (const Vector3& z : {joint.z1, joint.z2}) EXPECT_EQ(z, (Vector3{0, 0, 1}));
    for (const Vector3& t : {joint.t1, joint.t2}) EXPECT_EQ(t, Vector3());
    EXPECT_EQ(joint.type, 1U);
}

TEST(StorageScene, ReleasesEverythingThoughAssembliesAndFlexesPointBack) {
    auto scene = New<StorageScene>();
    const auto assembly = New<StorageScene::Assembly>();
    const auto flex = New<StorageScene::Flex>();
    const auto part = New<StorageScene::Part>();
    const auto group = New<StorageScene::Rigid>();
    part->assembly = assembly;
    part->flex = flex;
    assembly->parts.PushBack(part.Get());
    flex->parts.Resize(3);
    flex->parts.PushBack(part.Get());
    EXPECT_EQ(flex->parts[2], nullptr);
    group->parts.PushBack(part);
    scene->models.PushBack({});
    scene->models[0].rigids.PushBack(group);
    scene->models[0].joints.PushBack({});
    scene->models[0].joints[0].rigid1 = group;
    scene->selections.PushBack({});
    scene->selections[0].parts.PushBack(part);
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

TEST(StorageScene, ReleasesDeepSteps) {
    auto scene = New<StorageScene>();
    scene->buildingInstructions.PushBack({});
    auto* steps = &scene->buildingInstructions[0].steps;
    for (int depth = 0; depth < 200000; ++depth) {
        steps->PushBack(New<StorageScene::BIStep>());
        steps->PushBack(New<StorageScene::BIStep>());
        steps = &steps->Back()->steps;
    }
    const auto innermost = New<StorageScene::BIStep>();
    steps->PushBack(innermost);
    scene.Reset();
    EXPECT_EQ(innermost->ReferenceCount(), 1);
}

}  // namespace
}  // namespace ZEMA::testing
