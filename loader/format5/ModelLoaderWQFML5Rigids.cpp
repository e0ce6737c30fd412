// Rigids and the joints between them.
#include "loader/ModelLoaderErrors.h"
#include "loader/format5/AttributeReader.h"
#include "loader/format5/ChildElements.h"
#include "loader/format5/ModelLoaderWQFML5.h"
#include "loader/format5/Transformations.h"

namespace ZEMA {

namespace {

// False when the element names no type that there is.
bool ReadJointType(const XMLDOMNodeAString& node, std::uint32_t& type) {
    const AString* text = node.FindAttribute("type");
    if (text == nullptr || (*text != "hinge" && *text != "ball")) return false;
    type = *text == "ball" ? 1 : 0;
    return true;
}

}  // namespace

bool ModelLoaderWQFML5::ReadRigidSystems(const Node& root, StorageScene2& scene) {
    const Node* section = FindSection(root, "RigidSystems");
    if (section == nullptr) return true;
    scene.rigidSystems.Reserve(CountChildren(*section, "RigidSystem"));
    return ReadChildren(*section, "RigidSystem", [&](const Node& child) {
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
    if (rigidMap.Contains(refID)) return Fail(New<RigidError>(RigidError::ReusedRefID));
    const RefPointer<StorageScene2::Rigid> rigid = New<StorageScene2::Rigid>();
    system.rigids.PushBack(rigid);
    rigidMap.Insert(refID, rigid.Get());
    rigid->transformation = ReadTransformation(node);
    return ReadReferenceList(node, "boneRefs", boneMap, rigid->bones);
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

}  // namespace ZEMA
