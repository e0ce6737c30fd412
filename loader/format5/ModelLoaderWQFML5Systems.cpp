// The sections behind the bricks, which refer to what the sections before them hold: groups of parts, rigids of bones
// with the joints between them, and building instructions.
#include "core/BasicDeque.h"
#include "loader/ModelLoaderErrors.h"
#include "loader/format5/ElementReader.h"
#include "loader/format5/ModelLoaderWQFML5.h"

namespace ZEMA {

namespace {

// A group whose children are being read. Neither the node nor the group moves meanwhile.
struct OpenGroupElement {
    const XMLDOMNodeAString* node;
    StorageScene2::Group* group;
    std::size_t nextChild;
};

// False when the element names no type that there is.
bool ReadJointType(const XMLDOMNodeAString& node, std::uint32_t& type) {
    const AString* text = node.FindAttribute("type");
    if (text == nullptr || (*text != "hinge" && *text != "ball")) return false;
    type = *text == "ball" ? 1 : 0;
    return true;
}

// An instruction or a step whose children are being read. Neither the node nor the list moves meanwhile.
struct OpenStepElement {
    const XMLDOMNodeAString* node;
    BasicArray<RefPointer<StorageScene2::BIEvent>>* events;
    std::size_t nextChild;
};

RefPointer<StorageScene2::BIStep> ReadStep(const XMLDOMNodeAString& node, MemoryBlocks& blocks) {
    RefPointer<StorageScene2::BIStep> step = NewIn<StorageScene2::BIStep>(blocks);
    ReadString(node, "name", step->name);
    ReadBool(node, "exploded", step->exploded);
    if (step->exploded) ReadVector3(node, "a", step->a);
    step->events.Reserve(node.children.Size(), &blocks);
    return step;
}

}  // namespace

bool ModelLoaderWQFML5::ReadGroupSystems(const Node& root, StorageScene2& scene) {
    Node* const section = FindSection(root, "GroupSystems");
    if (section == nullptr) return true;
    scene.groupSystems.Reserve(CountChildren(*section, "GroupSystem"));
    return TakeChildren(*section, "GroupSystem", [&](const Node& child) {
        scene.groupSystems.PushBack({});
        Groups& groups = scene.groupSystems.Back().groups;
        groups.Reserve(CountChildren(child, "Group"));
        return ReadChildren(child, "Group", [&](const Node& group) { return ReadGroup(group, groups); });
    });
}

// A group's behaviours come after all the groups in it. The groups that are open are kept in a list of their own, since
// the nesting may be deeper than the stack.
bool ModelLoaderWQFML5::ReadGroup(const Node& node, Groups& groups) {
    bool succeeded = OpenGroup(node, groups);
    BasicDeque<OpenGroupElement> open;
    open.PushBack({&node, groups.Back().Get(), 0});
    while (!open.Empty()) {
        OpenGroupElement& top = open.Back();
        if (top.nextChild == top.node->children.Size()) {
            succeeded = ReadBehaviors(*top.node, top.group->behaviors) && succeeded;
            open.PopBack();
            continue;
        }
        const Node& child = *top.node->children[top.nextChild++];
        if (child.name != "Group") continue;
        succeeded = OpenGroup(child, top.group->groups) && succeeded;
        open.PushBack({&child, top.group->groups.Back().Get(), 0});
    }
    return succeeded;
}

// Reads what a group has besides groups and behaviours. It stands at the end of `groups` whatever the answer.
bool ModelLoaderWQFML5::OpenGroup(const Node& node, Groups& groups) {
    const RefPointer<StorageScene2::Group> group = New<StorageScene2::Group>();
    groups.PushBack(group);
    ReadString(node, "name", group->name);
    group->transformation = ReadTransformation(node);
    ReadVector3(node, "pivot", group->pivot);
    group->groups.Reserve(CountChildren(node, "Group"));
    return ReadReferenceList(node, "partRefs", partMap, group->parts);
}

bool ModelLoaderWQFML5::ReadRigidSystems(const Node& root, StorageScene2& scene) {
    Node* const section = FindSection(root, "RigidSystems");
    if (section == nullptr) return true;
    scene.rigidSystems.Reserve(CountChildren(*section, "RigidSystem"));
    return TakeChildren(*section, "RigidSystem", [&](const Node& child) {
        scene.rigidSystems.PushBack({});
        return ReadRigidSystem(child, scene.rigidSystems.Back());
    });
}

// All rigids come before the joints, which may name rigids that are written after them.
bool ModelLoaderWQFML5::ReadRigidSystem(const Node& node, StorageScene2::RigidSystem& system) {
    system.rigids.Reserve(CountChildren(node, "Rigid"));
    const bool rigids = ReadChildren(node, "Rigid", [&](const Node& child) { return ReadRigid(child, system); });
    system.joints.Reserve(CountChildren(node, "Joint"));
    const bool joints = ReadChildren(node, "Joint", [&](const Node& child) {
        system.joints.PushBack({});
        if (ReadJoint(child, system.joints.Back())) return true;
        system.joints.PopBack();
        return Fail(New<JointError>());
    });
    return rigids && joints;
}

bool ModelLoaderWQFML5::ReadRigid(const Node& node, StorageScene2::RigidSystem& system) {
    std::uint32_t refID = 0;
    if (!ReadUnsigned(node, "refID", refID)) return Fail(New<RigidError>(RigidError::MissingRefID));
    const auto place = PlaceOf(rigidMap, refID);
    if (IsUsed(rigidMap, place, refID)) return Fail(New<RigidError>(RigidError::ReusedRefID));
    const RefPointer<StorageScene2::Rigid> rigid = NewIn<StorageScene2::Rigid>(blocks_);
    system.rigids.PushBack(rigid);
    rigidMap.InsertBefore(place, refID, rigid.Get());
    rigid->transformation = ReadTransformation(node);
    return ReadReferenceList(node, "boneRefs", boneMap, rigid->bones, &blocks_);
}

bool ModelLoaderWQFML5::ReadJoint(const Node& node, StorageScene2::Joint& joint) const {
    ReadString(node, "name", joint.name);
    if (!ReadJointType(node, joint.type)) return false;
    bool atFirstEnd = true;
    for (const auto& child : node.children) {
        if (child->name != "RigidRef") continue;
        if (!ReadReference(*child, "rigidRef", rigidMap, atFirstEnd ? joint.rigid1 : joint.rigid2)) return false;
        ReadVector3(*child, "a", atFirstEnd ? joint.a1 : joint.a2);
        ReadVector3(*child, "z", atFirstEnd ? joint.z1 : joint.z2);
        ReadVector3(*child, "t", atFirstEnd ? joint.t1 : joint.t2);
        atFirstEnd = false;
    }
    return true;
}

bool ModelLoaderWQFML5::ReadInstructions(const Node& root, StorageScene2& scene) {
    Node* const section = FindSection(root, "BuildingInstructions");
    if (section == nullptr) return true;
    scene.buildingInstructions.Reserve(CountChildren(*section, "BuildingInstruction"));
    return TakeChildren(*section, "BuildingInstruction", [&](const Node& child) {
        scene.buildingInstructions.PushBack({});
        StorageScene2::BI& instruction = scene.buildingInstructions.Back();
        ReadString(child, "name", instruction.name);
        instruction.events.Reserve(child.children.Size());
        return ReadEvents(child, instruction.events);
    });
}

// The steps that are open are kept in a list of their own, since the nesting may be deeper than the stack. Parts are
// placed by steps only, not by the instruction itself.
bool ModelLoaderWQFML5::ReadEvents(const Node& node, Events& events) {
    bool succeeded = true;
    BasicDeque<OpenStepElement> open;
    open.PushBack({&node, &events, 0});
    while (!open.Empty()) {
        OpenStepElement& top = open.Back();
        if (top.nextChild == top.node->children.Size()) {
            open.PopBack();
            continue;
        }
        const Node& child = *top.node->children[top.nextChild++];
        if (child.name == "Step") {
            const RefPointer<StorageScene2::BIStep> step = ReadStep(child, blocks_);
            top.events->PushBack(step);
            open.PushBack({&child, &step->events, 0});
        } else if (child.name == "Camera") {
            succeeded = ReadCameraEvent(child, *top.events) && succeeded;
        } else if (child.name == "PartRef" && open.Size() > 1) {
            succeeded = ReadPartEvent(child, *top.events) && succeeded;
        }
    }
    return succeeded;
}

bool ModelLoaderWQFML5::ReadCameraEvent(const Node& node, Events& events) {
    const RefPointer<StorageScene2::BICamera> event = New<StorageScene2::BICamera>();
    if (!ReadReference(node, "cameraRef", cameraMap, event->camera)) {
        return Fail(New<BIError>(BIError::NonExistingCamera));
    }
    events.PushBack(event);
    return true;
}

bool ModelLoaderWQFML5::ReadPartEvent(const Node& node, Events& events) {
    const RefPointer<StorageScene2::BIPart> event = NewIn<StorageScene2::BIPart>(blocks_, nullptr);
    events.PushBack(event);
    ReadReference(node, "partRef", partMap, event->part);
    if (!event->part) return Fail(New<BIError>(BIError::NonExistingPart));
    ReadBool(node, "exploded", event->exploded);
    if (event->exploded) event->transformation = ReadTransformation(node);
    return true;
}

}  // namespace ZEMA
