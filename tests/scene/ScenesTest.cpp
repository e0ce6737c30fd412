// What is released with a scene, and when.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "scene/StorageScene.h"
#include "scene/StorageScene2.h"

namespace ZEMA::testing {
namespace {

using Words = std::vector<std::string>;

// Tells when it is released.
template <class T>
class Logged : public T {
public:
    template <class... Arguments>
    Logged(Words& log, const char* label, Arguments... arguments) : T(arguments...), log_(log), label_(label) {}
    void OnLastRelease() override { log_.push_back(label_); }

private:
    Words& log_;
    const char* label_;
};

template <class T, class... Arguments>
RefPointer<T> NewLogged(Words& log, const char* name, Arguments... arguments) {
    return RefPointer<T>(New<Logged<T>>(log, name, arguments...));
}

// One object of most kinds; the back pointers and references across the tree are set.
RefPointer<StorageScene2> LoggedScene(Words& log) {
    const auto scene = New<StorageScene2>();
    scene->cameras.PushBack(NewLogged<StorageScene2::Camera>(log, "camera"));
    const auto brick = NewLogged<StorageScene2::Brick>(log, "brick");
    scene->bricks.PushBack(brick);
    const auto part = NewLogged<StorageScene2::Part>(log, "part", 7U);
    part->brick = brick.Get();
    brick->parts.PushBack(part);
    const auto bone = NewLogged<StorageScene2::Bone>(log, "bone");
    bone->part = part.Get();
    part->bones.PushBack(bone);
    scene->rigidSystems.PushBack({});
    scene->rigidSystems[0].rigids.PushBack(NewLogged<StorageScene2::Rigid>(log, "rigid"));
    scene->rigidSystems[0].rigids[0]->bones.PushBack(bone);
    scene->groupSystems.PushBack({});
    scene->groupSystems[0].groups.PushBack(NewLogged<StorageScene2::Group>(log, "group"));
    scene->groupSystems[0].groups[0]->parts.PushBack(part);
    scene->buildingInstructions.PushBack({});
    scene->buildingInstructions[0].events.PushBack(NewLogged<StorageScene2::BIStep>(log, "step"));
    scene->bricksCamera = NewLogged<StorageScene2::Camera>(log, "bricks camera");
    return scene;
}

TEST(StorageScene2, ReleasesItsObjectsInReverseOrder) {
    Words log;
    auto scene = LoggedScene(log);
    EXPECT_EQ(log, Words());
    scene.Reset();
    EXPECT_EQ(log, (Words{"bricks camera", "step", "group", "rigid", "brick", "part", "bone", "camera"}));
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
