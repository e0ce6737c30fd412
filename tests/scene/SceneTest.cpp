// What is released with a scene, and when; placements.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "scene/Matrix4.h"
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

constexpr float kTiny = std::numeric_limits<float>::denorm_min();

// Where the matrix takes the point.
Vector3 Moved(const Vector3& p, const Matrix4& matrix) {
    const auto& m = matrix.m;
    return {p.x * m[0] + p.y * m[4] + p.z * m[8] + m[12], p.x * m[1] + p.y * m[5] + p.z * m[9] + m[13],
            p.x * m[2] + p.y * m[6] + p.z * m[10] + m[14]};
}

void ExpectNear(const Vector3& actual, const Vector3& expected) {
    EXPECT_NEAR(actual.x, expected.x, 1e-5);
    EXPECT_NEAR(actual.y, expected.y, 1e-5);
    EXPECT_NEAR(actual.z, expected.z, 1e-5);
}

TEST(Matrix4, RotatesAboutAnAxisAndThenMoves) {
    const struct {
        const char* what;
        Vector3 axis;
        float degrees;
        Vector3 point;
        Vector3 moved;
    } rows[] = {
        {"about x", {1, 0, 0}, 90, {0, 1, 0}, {10, 20, 31}},
        {"about y", {0, 1, 0}, 90, {0, 0, 1}, {11, 20, 30}},
        {"about z, the other way", {0, 0, 1}, -90, {1, 0, 0}, {10, 19, 30}},
        {"an axis of another length", {0, 0, 5}, 90, {1, 0, 0}, {10, 21, 30}},
        {"about a diagonal", {1, 1, 1}, 120, {1, 2, 3}, {13, 21, 32}},
        {"an axis too long for its square", {1e30F, 1e30F, 1e30F}, 120, {1, 2, 3}, {13, 21, 32}},
        {"one whose square is nothing", {0, 0, 1e-25F}, 180, {1, 2, 3}, {9, 18, 33}},
        {"one whose square has few digits", {2e-22F, 2e-22F, 2e-22F}, 120, {1, 2, 3}, {13, 21, 32}},
        {"the shortest", {0, kTiny, 0}, 90, {0, 0, 1}, {11, 20, 30}},
        {"no axis", {0, 0, 0}, 90, {1, 2, 3}, {11, 22, 33}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Matrix4 matrix = Matrix4::FromAxisAngle(row.axis, row.degrees * kRadiansPerDegree, {10, 20, 30});
        ExpectNear(Moved(row.point, matrix), row.moved);
    }
    EXPECT_EQ(Matrix4::FromAxisAngle({1, 1, 4}, 90 * kRadiansPerDegree, {}).m[1], 0x1.ff29a8p-1F)
        << "to the last bit: taken in double it would end in a6";
}

TEST(Matrix4, ProductActsFromTheLeft) {
    const Matrix4 turn = Matrix4::FromAxisAngle({0, 0, 1}, 90 * kRadiansPerDegree, {0, 0, 0});
    const Matrix4 move = Matrix4::FromTranslation({1, 2, 3});
    ExpectNear(Moved({1, 0, 0}, turn * move), {1, 3, 3});
    ExpectNear(Moved({1, 0, 0}, move * turn), {-2, 2, 3});
}

TEST(Matrix4, SanitisesItsRotation) {
    const std::array<float, 9> identity{1, 0, 0, 0, 1, 0, 0, 0, 1};
    const struct {
        const char* what;
        std::array<float, 9> rotation;
        std::array<float, 9> sanitised;
    } rows[] = {
        {"rows of length 1 stay", {0, 1, 0, -1, 0, 0, 0, 0, 1}, {0, 1, 0, -1, 0, 0, 0, 0, 1}},
        {"others get it", {0, 2, 0, -3, 0, 0, 0, 3, 4}, {0, 1, 0, -1, 0, 0, 0, 0.6F, 0.8F}},
        {"short ones, too", {0, 1e-9F, 0, -1, 0, 0, 0, 0, 1}, {0, 1, 0, -1, 0, 0, 0, 0, 1}},
        {"an empty row resets all", {0, 2, 0, 0, 0, 0, 0, 3, 4}, identity},
        {"so does one too short to measure", {0, 2, 0, 0, 3, 0, kTiny, 0, 0}, identity},
        {"and one too long", {1e30F, 1e30F, 0, 0, 1, 0, 0, 2, 0}, identity},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Matrix4 matrix = Matrix4::FromTranslation({7, 8, 9});
        Matrix4 expected = matrix;
        for (std::size_t i = 0; i < 9; ++i) {
            matrix.m[i / 3 * 4 + i % 3] = row.rotation[i];
            expected.m[i / 3 * 4 + i % 3] = row.sanitised[i];
        }
        matrix.Sanitise();
        EXPECT_EQ(matrix, expected);
    }
}

}  // namespace
}  // namespace ZEMA::testing
