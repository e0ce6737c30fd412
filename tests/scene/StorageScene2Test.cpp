#include "scene/StorageScene2.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

// One object of each kind; the back pointers and references across the tree are set.
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

TEST(StorageScene2, StartsWithItsDefaults) {
    const auto camera = New<StorageScene2::Camera>();
    EXPECT_EQ(camera->fieldOfView, 80);
    EXPECT_EQ(camera->distance, 0);
    EXPECT_EQ(camera->transformation, Matrix4());
    EXPECT_FALSE(camera->orthographic);
    const StorageScene2::Joint joint;
    for (const Vector3& a : {joint.a1, joint.a2}) EXPECT_EQ(a, (Vector3{0, 1, 0}));
    for (const Vector3& z : {joint.z1, joint.z2}) EXPECT_EQ(z, (Vector3{0, 0, 1}));
    for (const Vector3& t : {joint.t1, joint.t2}) EXPECT_EQ(t, Vector3());
    EXPECT_EQ(joint.type, 1U);
}

TEST(StorageScene2, EventsTellWhatTheyAre) {
    EXPECT_EQ(New<StorageScene2::BIStep>()->type, 0U);
    EXPECT_EQ(New<StorageScene2::BICamera>()->type, 1U);
    EXPECT_EQ(New<StorageScene2::BIPart>(nullptr)->type, 2U);
}

TEST(StorageScene2, ReleasesItsObjectsInReverseOrder) {
    Words log;
    auto scene = LoggedScene(log);
    EXPECT_EQ(log, Words());
    scene.Reset();
    EXPECT_EQ(log, (Words{"bricks camera", "step", "group", "rigid", "brick", "part", "bone", "camera"}));
}

TEST(StorageScene2, ReleasesDeepGroupsAndSteps) {
    auto scene = New<StorageScene2>();
    scene->groupSystems.PushBack({});
    auto* groups = &scene->groupSystems[0].groups;
    scene->buildingInstructions.PushBack({});
    auto* events = &scene->buildingInstructions[0].events;
    for (int depth = 0; depth < 200000; ++depth) {
        groups->PushBack(New<StorageScene2::Group>());
        groups = &groups->Back()->groups;
        const auto step = New<StorageScene2::BIStep>();
        events->PushBack(New<StorageScene2::BICamera>());
        events->PushBack(step);
        events->PushBack(New<StorageScene2::BIPart>(nullptr));
        events = &step->events;
    }
    const RefPointer<StorageScene2::BIEvent> innermostPart = [&] {
        events->PushBack(New<StorageScene2::BIPart>(nullptr));
        return events->Back();
    }();
    scene.Reset();
    EXPECT_EQ(innermostPart->ReferenceCount(), 1);
}

}  // namespace
}  // namespace ZEMA::testing
