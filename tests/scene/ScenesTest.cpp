// What is released with a scene, and when.
#include <gtest/gtest.h>

#include <string>

#include "scene/StorageScene.h"
#include "scene/StorageScene2.h"

namespace ZEMA::testing {
namespace {

// Tells when it is released.
template <class T>
class Logged : public T {
public:
    Logged(std::string& released, const char* label) : released_(released), label_(label) {}
    void OnLastRelease() override { released_.append(label_).append(" "); }

private:
    std::string& released_;
    const char* label_;
};

TEST(StorageScene2, ReleasesItsObjectsInReverseOrder) {
    std::string released;
    auto scene = New<StorageScene2>();
    scene->cameras.PushBack(New<Logged<StorageScene2::Camera>>(released, "camera"));
    scene->bricks.PushBack(New<Logged<StorageScene2::Brick>>(released, "brick"));
    scene->rigidSystems.PushBack({});
    scene->rigidSystems[0].rigids.PushBack(New<Logged<StorageScene2::Rigid>>(released, "rigid"));
    scene->groupSystems.PushBack({});
    scene->groupSystems[0].groups.PushBack(New<Logged<StorageScene2::Group>>(released, "group"));
    scene->buildingInstructions.PushBack({});
    scene->buildingInstructions[0].events.PushBack(New<Logged<StorageScene2::BIStep>>(released, "step"));
    scene->bricksCamera = New<Logged<StorageScene2::Camera>>(released, "bricks-camera");
    scene.Reset();
    EXPECT_EQ(released, "bricks-camera step group rigid brick camera ");
}

TEST(StorageScene2, ReleasesEverythingThoughPartsAndBonesPointBack) {
    auto scene = New<StorageScene2>();
    const auto brick = New<StorageScene2::Brick>();
    const auto part = New<StorageScene2::Part>(7U);
    const auto bone = New<StorageScene2::Bone>();
    scene->bricks.PushBack(brick);
    brick->parts.PushBack(part);
    part->brick = brick.Get();
    part->bones.PushBack(bone);
    bone->part = part.Get();
    scene.Reset();
    EXPECT_EQ(brick->ReferenceCount(), 1);
    EXPECT_EQ(part->ReferenceCount(), 2) << "held here and by its brick";
    EXPECT_EQ(bone->ReferenceCount(), 2) << "held here and by its part";
}

TEST(Scenes, ReleaseDeepGroupsAndSteps) {
    StorageScene2::GroupSystem system;
    StorageScene2::BI instruction;
    StorageScene::BI older;
    auto* groups = &system.groups;
    auto* events = &instruction.events;
    auto* steps = &older.steps;
    for (int depth = 0; depth < 200000; ++depth) {
        groups->PushBack(New<StorageScene2::Group>());
        groups = &groups->Back()->groups;
        const auto step = New<StorageScene2::BIStep>();
        events->PushBack(New<StorageScene2::BICamera>());
        events->PushBack(step);
        events->PushBack(New<StorageScene2::BIPart>(nullptr));
        events = &step->events;
        steps->PushBack(New<StorageScene::BIStep>());
        steps = &steps->Back()->steps;
    }
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
