#include "loader/format4/ModelLoaderStorageScene.h"

#include <utility>

#include "core/BasicDeque.h"

namespace ZEMA {

namespace {

using Brick = StorageScene2::Brick;
using Part = StorageScene2::Part;
using Rigid = StorageScene2::Rigid;

Brick* MakeBrick(std::uint32_t designID, const StorageScene::Part& source, StorageScene2& target,
                 MemoryBlocks& blocks) {
    const RefPointer<Brick> brick = NewIn<Brick>(blocks);
    brick->designID = designID;
    brick->itemNos = source.itemNos;
    target.bricks.PushBack(brick);
    return brick.Get();
}

// The type keeps its number, although format 5 counts the other way round: there 0 is a hinge.
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

using Steps = BasicArray<RefPointer<StorageScene::BIStep>>;
using Events = BasicArray<RefPointer<StorageScene2::BIEvent>>;

// A list of steps that is being converted.
struct OpenList {
    const Steps* steps;
    std::size_t next;             // of `steps`
    Events* events;               // what the steps become
    StorageScene::BIStep* owner;  // which the list is nested in; null for an instruction's own
};

void AppendCamera(const RefPointer<StorageScene2::Camera>& camera, Events& events) {
    if (!camera) return;
    const auto event = New<StorageScene2::BICamera>();
    event->camera = camera;
    events.PushBack(event);
}

Events& AppendStep(const StorageScene::BIStep& step, Events& events) {
    const auto event = New<StorageScene2::BIStep>();
    event->name = step.name;
    event->exploded = step.exploded;
    event->a = step.a;
    events.PushBack(event);
    return event->events;
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

// A joint may name a group of an earlier model; that end stays empty, as a rigid system connects its own rigids only.
void ModelLoaderStorageScene::ConvertModel(const StorageScene::Model& model, StorageScene2& target) {
    BasicMap<StorageScene::Rigid*, Rigid*> rigids(blocks_);
    target.rigidSystems.PushBack({});
    StorageScene2::RigidSystem& system = target.rigidSystems.Back();
    for (const auto& group : model.rigids) {
        const RefPointer<Rigid> rigid = NewIn<Rigid>(blocks_);
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
    const RefPointer<StorageScene2::Bone> bone = NewIn<StorageScene2::Bone>(blocks_);
    bone->transformation = source.transformation * group.transformation;
    bone->part = &part;
    if (!source.flex) {
        part.bones[0] = bone;
    } else if (const auto position = controlPoints_.Find(&source); position != controlPoints_.end()) {
        part.bones[position->second] = bone;
    }
    rigid.bones.PushBack(bone, &blocks_);
}

// The part that `source` becomes, or a share of; made where there is none yet. What parts share has the item numbers,
// the materials and the decorations of the first of them.
Part* ModelLoaderStorageScene::PartFor(StorageScene::Part& source, StorageScene2& target) {
    Brick* brick = source.assembly ? AssemblyBrick(source, target) : nullptr;
    StorageScene::Flex* const flex = source.flex.Get();
    if (flex == nullptr) {
        if (brick == nullptr) brick = MakeBrick(source.designID, source, target, blocks_);
        return MakePart(source, source.designID, 1, *brick);
    }
    const auto known = flexParts.Find(flex);
    if (known != flexParts.end()) return known->second;
    if (brick == nullptr) brick = MakeBrick(flex->designID, source, target, blocks_);
    RecordControlPoints(*flex);
    return flexParts[flex] = MakePart(source, flex->designID, flex->parts.Size(), *brick);
}

Brick* ModelLoaderStorageScene::AssemblyBrick(const StorageScene::Part& source, StorageScene2& target) {
    StorageScene::Assembly* const assembly = source.assembly.Get();
    Brick*& brick = assemblyBricks[assembly];
    if (brick == nullptr) brick = MakeBrick(assembly->assemblyID, source, target, blocks_);
    return brick;
}

// Each bone finds its place here: to search the flexible element for it would be quadratic.
void ModelLoaderStorageScene::RecordControlPoints(const StorageScene::Flex& flex) {
    for (std::size_t point = 0; point < flex.parts.Size(); ++point) controlPoints_.Insert(flex.parts[point], point);
}

Part* ModelLoaderStorageScene::MakePart(const StorageScene::Part& source, std::uint32_t designID, std::size_t boneCount,
                                        Brick& brick) {
    const RefPointer<Part> part = NewIn<Part>(blocks_, designID);
    part->materials = source.materials;
    for (const StorageScene::Decoration& decoration : source.decorations) {
        indexBudget.GrowToHold(part->decoration, decoration.surfaceID);
        part->decoration[decoration.surfaceID] = decoration.decorationID;
    }
    part->bones.Reserve(boneCount, &blocks_);
    part->bones.Resize(boneCount);
    part->brick = &brick;
    brick.parts.PushBack(part, &blocks_);
    return part.Get();
}

// A step's nested steps come before the parts that it places itself. Steps may nest as deep as a document says, so the
// lists that are open are kept here and not on the call stack.
void ModelLoaderStorageScene::ConvertSteps(const Steps& steps, Events& events) {
    BasicDeque<OpenList> open;
    open.PushBack({&steps, 0, &events, nullptr});
    while (!open.Empty()) {
        OpenList& list = open.Back();
        if (list.next < list.steps->Size()) {
            StorageScene::BIStep& step = *(*list.steps)[list.next++];
            AppendCamera(step.camera, *list.events);
            open.PushBack({&step.steps, 0, &AppendStep(step, *list.events), &step});
        } else {
            if (list.owner != nullptr) ConvertPlacedParts(*list.owner, *list.events);
            open.PopBack();
        }
    }
}

void ModelLoaderStorageScene::ConvertPlacedParts(StorageScene::BIStep& step, Events& events) {
    for (StorageScene::BIPart& placed : step.parts) {
        const auto position = partParts.Find(placed.part.Get());
        if (position == partParts.end() || !PlaceOnce(placed.part->flex.Get())) continue;
        placed.transformation.Sanitise();
        const auto event = NewIn<StorageScene2::BIPart>(blocks_, RefPointer<StorageScene2::Part>(position->second));
        event->exploded = placed.exploded;
        event->transformation = placed.transformation;
        events.PushBack(event, &blocks_);
    }
}

// A flexible element is placed with the first of its control points; false for the others.
bool ModelLoaderStorageScene::PlaceOnce(StorageScene::Flex* flex) {
    if (flex == nullptr) return true;
    if (!placed_.Insert(flex)) return false;
    placedFlexes.PushBack(flex);
    return true;
}

}  // namespace ZEMA
