// Bricks, their parts and their parts' bones.
#include "loader/DesignCatalogue.h"
#include "loader/DesignCorrections.h"
#include "loader/ModelLoaderErrors.h"
#include "loader/format5/ElementReader.h"
#include "loader/format5/ModelLoaderWQFML5.h"

namespace ZEMA {

namespace {}  // namespace

bool ModelLoaderWQFML5::ReadBricks(const Node& root, StorageScene2& scene) {
    Node* const section = FindSection(root, "Bricks");
    if (section == nullptr) return false;
    if (!ReadReference(*section, "cameraRef", cameraMap, scene.bricksCamera)) {
        Raise(New<CameraError>(CameraError::NonExistingCamera));
    }
    scene.bricks.Reserve(CountChildren(*section, "Brick"));
    return TakeChildren(*section, "Brick", [&](const Node& child) { return ReadBrick(child, scene); });
}

RefPointer<StorageScene2::Brick> ModelLoaderWQFML5::NewBrick(std::uint32_t design) {
    RefPointer<StorageScene2::Brick> brick = NewIn<StorageScene2::Brick>(blocks_);
    brick->designID = design;
    return brick;
}

bool ModelLoaderWQFML5::ReadBrick(const Node& node, StorageScene2& scene) {
    std::uint32_t refID = 0;
    if (!ReadUnsigned(node, "refID", refID)) return Fail(New<BrickError>(BrickError::MissingRefID));
    const auto place = PlaceOf(brickMap, refID);
    if (IsUsed(brickMap, place, refID)) return Fail(New<BrickError>(BrickError::ReusedRefID));
    std::uint32_t designID = 0;
    ReadUnsigned(node, "designID", designID);
    if (designID == 0) return Fail(New<BrickError>(BrickError::MissingDesignID));

    const RefPointer<StorageScene2::Brick> brick = NewBrick(designID);
    ReadString(node, "itemNos", brick->itemNos);
    brickMap.InsertBefore(place, refID, brick.Get());
    scene.bricks.PushBack(brick);
    const bool behaviors = ReadBehaviors(node, brick->behaviors);
    brick->parts.Reserve(CountChildren(node, "Part"), &blocks_);
    const bool parts = ReadChildren(node, "Part", [&](const Node& child) { return ReadPart(child, *brick); });
    brick->designID = SubstituteDesign(designID);
    if (brick->designID == CombinedDesign().combined) SplitBrick(refID, scene);
    return behaviors && parts;
}

bool ModelLoaderWQFML5::ReadPart(const Node& node, StorageScene2::Brick& brick) {
    std::uint32_t refID = 0;
    if (!ReadUnsigned(node, "refID", refID)) return Fail(New<PartError>(nullptr, PartError::MissingRefID));
    const auto place = PlaceOf(partMap, refID);
    if (IsUsed(partMap, place, refID)) return Fail(New<PartError>(nullptr, PartError::ReusedRefID));
    std::uint32_t designID = 0;
    ReadUnsigned(node, "designID", designID);
    if (designID == 0) return Fail(New<PartError>(nullptr, PartError::MissingDesignID));

    const RefPointer<StorageScene2::Part> part = NewIn<StorageScene2::Part>(blocks_, designID);
    if (!ReadPartLists(node, *part)) return false;
    partMap.InsertBefore(place, refID, part.Get());
    part->brick = &brick;
    brick.parts.PushBack(part);
    const bool behaviors = ReadBehaviors(node, part->behaviors);
    part->bones.Reserve(CountChildren(node, "Bone"), &blocks_);
    const bool bones = ReadChildren(node, "Bone", [&](const Node& child) { return ReadBone(child, *part); });
    part->designID = SubstituteDesign(designID);
    CorrectPart(*part, brickSetVersion, designTemplates.Get());
    return behaviors && bones;
}

// False only when the part is left without a material; entries that cannot be read are raised and count as 0.
bool ModelLoaderWQFML5::ReadPartLists(const Node& node, StorageScene2::Part& part) {
    if (!ReadNumberList(node, "materials", 0, part.materials, &blocks_)) {
        Raise(New<PartError>(&part, PartError::WrongMaterial));
    }
    if (part.materials.Empty()) return Fail(New<PartError>(&part, PartError::MissingMaterial));
    if (!ReadNumberList(node, "decoration", 1, part.decoration, &blocks_)) {
        Raise(New<PartError>(&part, PartError::WrongDecoration));
    }
    return true;
}

bool ModelLoaderWQFML5::ReadBone(const Node& node, StorageScene2::Part& part) {
    std::uint32_t refID = 0;
    if (!ReadUnsigned(node, "refID", refID)) return Fail(New<BoneError>(BoneError::MissingRefID));
    const auto place = PlaceOf(boneMap, refID);
    if (IsUsed(boneMap, place, refID)) return Fail(New<BoneError>(BoneError::ReusedRefID));
    const RefPointer<StorageScene2::Bone> bone = NewIn<StorageScene2::Bone>(blocks_);
    boneMap.InsertBefore(place, refID, bone.Get());
    bone->part = &part;
    part.bones.PushBack(bone);
    bone->transformation = ReadTransformation(node);
    return ReadBehaviors(node, bone->behaviors);
}

// Puts two bricks in the place of the combined one, which is the last that was read.
void ModelLoaderWQFML5::SplitBrick(std::uint32_t refID, StorageScene2& scene) {
    const DesignSplit& designs = CombinedDesign();
    const RefPointer<StorageScene2::Brick> combined = scene.bricks.Back();
    const RefPointer<StorageScene2::Brick> first = NewBrick(designs.first);
    const RefPointer<StorageScene2::Brick> second = NewBrick(designs.second);
    first->behaviors = combined->behaviors;
    second->behaviors = combined->behaviors;
    for (const auto& part : combined->parts) {
        if (part->designID == designs.second) {
            part->brick = second.Get();
            second->parts.PushBack(part);
        } else if (part->designID == designs.first) {
            part->brick = first.Get();
            first->parts.PushBack(part);
        } else {
            DropPart(part);
        }
    }
    brickMap.Erase(brickMap.Find(refID));
    scene.bricks.PopBack();
    scene.bricks.PushBack(first);
    scene.bricks.PushBack(second);
}

// The part and its bones stay within reach of references; no plain pointer may lead from them to what can be gone.
void ModelLoaderWQFML5::DropPart(const RefPointer<StorageScene2::Part>& part) {
    droppedParts_.PushBack(part);
    part->brick = nullptr;
    for (const auto& bone : part->bones) bone->part = nullptr;
}

}  // namespace ZEMA
