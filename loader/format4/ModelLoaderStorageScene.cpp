#include "loader/format4/ModelLoaderStorageScene.h"

#include <utility>

namespace ZEMA {

namespace {

using Brick = StorageScene2::Brick;
using Part = StorageScene2::Part;
using Rigid = StorageScene2::Rigid;

Brick* MakeBrick(std::uint32_t designID, const StorageScene::Part& source, StorageScene2& target) {
    const RefPointer<Brick> brick = New<Brick>();
    brick->designID = designID;
    brick->itemNos = source.itemNos;
    target.bricks.PushBack(brick);
    return brick.Get();
}

StorageScene2::Joint ConvertJoint(const StorageScene::Joint& source, Rigid* rigid1, Rigid* rigid2) {
    StorageScene2::Joint joint;
    joint.name = source.name;
    joint.rigid1.Reset(rigid1);
    joint.rigid2.Reset(rigid2);
    joint.a1 = source.a1;
    joint.z1 = source.z1;
    joint.t1 = source.t1;
    joint.a2 = source.a2;
    joint.z2 = source.z2;
    joint.t2 = source.t2;
    joint.type = source.type != 0 ? 1 : 0;
    return joint;
}

}  // namespace

ModelLoaderStorageScene::ModelLoaderStorageScene() = default;
ModelLoaderStorageScene::~ModelLoaderStorageScene() = default;

bool ModelLoaderStorageScene::Load(AString content, StorageScene2* scene, std::uint32_t options) {
    const RefPointer<StorageScene> source = New<StorageScene>();
    if (!LoadScene(std::move(content), source.Get(), options)) return false;
    Convert(source.Get(), scene);
    return true;
}

void ModelLoaderStorageScene::Convert(StorageScene* source, StorageScene2* target) {
    target->name = source->name;
    target->cameras.Swap(source->cameras);
    target->bricksCamera = source->camera;
    target->meta.Swap(source->meta);
    ClearTables();
    for (const StorageScene::Model& model : source->models) ConvertModel(model, *target);
    for (const StorageScene::BI& instruction : source->buildingInstructions) {
        target->buildingInstructions.PushBack({instruction.name, {}});
        ConvertSteps(instruction.steps, target->buildingInstructions.Back().events);
    }
}

void ModelLoaderStorageScene::ClearTables() {
    assemblyBricks.Clear();
    flexParts.Clear();
    partParts.Clear();
    placedFlexes.Clear();
    placed_.Clear();
    controlPoints_.Clear();
}

void ModelLoaderStorageScene::ConvertModel(const StorageScene::Model& model, StorageScene2& target) {
    BasicMap<StorageScene::Rigid*, Rigid*> rigids;
    target.rigidSystems.PushBack({});
    StorageScene2::RigidSystem& system = target.rigidSystems.Back();
    for (const auto& group : model.rigids) {
        const RefPointer<Rigid> rigid = New<Rigid>();
        system.rigids.PushBack(rigid);
        rigids[group.Get()] = rigid.Get();
        ConvertGroup(*group, *rigid, target);
    }
    const auto rigidOf = [&](const RefPointer<StorageScene::Rigid>& group) {
        const auto position = rigids.Find(group.Get());
        return position == rigids.end() ? nullptr : position->second;
    };
    for (const StorageScene::Joint& joint : model.joints) {
        system.joints.PushBack(ConvertJoint(joint, rigidOf(joint.rigid1), rigidOf(joint.rigid2)));
    }
}

void ModelLoaderStorageScene::ConvertGroup(StorageScene::Rigid& group, Rigid& rigid, StorageScene2& target) {
    group.transformation.Sanitise();
    rigid.transformation = group.transformation;
    for (const auto& source : group.parts) {
        Part* const part = PartFor(*source, target);
        ConvertBone(*source, group, *part, rigid);
        partParts[source.Get()] = part;
    }
}

// The bone of a part that lost its control point to another belongs to its rigid alone.
void ModelLoaderStorageScene::ConvertBone(StorageScene::Part& source, const StorageScene::Rigid& group, Part& part,
                                          Rigid& rigid) {
    source.transformation.Sanitise();
    const RefPointer<StorageScene2::Bone> bone = New<StorageScene2::Bone>();
    bone->transformation = source.transformation * group.transformation;
    bone->part = &part;
    if (!source.flex) {
        part.bones[0] = bone;
    } else if (const auto position = controlPoints_.Find(&source); position != controlPoints_.end()) {
        part.bones[position->second] = bone;
    }
    rigid.bones.PushBack(bone);
}

// The part that `source` becomes, or a share of; made where there is none yet.
Part* ModelLoaderStorageScene::PartFor(StorageScene::Part& source, StorageScene2& target) {
    Brick* brick = source.assembly ? AssemblyBrick(source, target) : nullptr;
    StorageScene::Flex* const flex = source.flex.Get();
    if (flex == nullptr) {
        if (brick == nullptr) brick = MakeBrick(source.designID, source, target);
        return MakePart(source, source.designID, 1, *brick);
    }
    const auto known = flexParts.Find(flex);
    if (known != flexParts.end()) return known->second;
    if (brick == nullptr) brick = MakeBrick(flex->designID, source, target);
    RecordControlPoints(*flex);
    return flexParts[flex] = MakePart(source, flex->designID, flex->parts.Size(), *brick);
}

Brick* ModelLoaderStorageScene::AssemblyBrick(const StorageScene::Part& source, StorageScene2& target) {
    StorageScene::Assembly* const assembly = source.assembly.Get();
    Brick*& brick = assemblyBricks[assembly];
    if (brick == nullptr) brick = MakeBrick(assembly->assemblyID, source, target);
    return brick;
}

// Each bone finds its place here: to search the flexible element for it would be quadratic.
void ModelLoaderStorageScene::RecordControlPoints(const StorageScene::Flex& flex) {
    for (std::size_t point = 0; point < flex.parts.Size(); ++point) controlPoints_.Insert(flex.parts[point], point);
}

Part* ModelLoaderStorageScene::MakePart(const StorageScene::Part& source, std::uint32_t designID, std::size_t boneCount,
                                        Brick& brick) {
    const RefPointer<Part> part = New<Part>(designID);
    part->materials = source.materials;
    for (const StorageScene::Decoration& decoration : source.decorations) {
        indexBudget.GrowToHold(part->decoration, decoration.surfaceID);
        part->decoration[decoration.surfaceID] = decoration.decorationID;
    }
    part->bones.Resize(boneCount);
    part->brick = &brick;
    brick.parts.PushBack(part);
    return part.Get();
}

}  // namespace ZEMA
