// What is in a joint: the groups that it connects.
#include <cmath>

#include "loader/ModelLoaderErrors.h"
#include "loader/format4/ModelLoaderWQFML4State.h"

namespace ZEMA::WQFML4 {

namespace {

// One end of a joint that is to be filled.
struct End {
    RefPointer<StorageScene::Rigid>& rigid;
    Vector3& a;
    Vector3& z;
    Vector3& t;
};

bool IsUnit(const Vector3& vector) {
    return std::fabs(Length(vector) - 1) < 0.00001F;
}

// False where the group does not exist; the attributes behind it are not read then.
bool ReadEnd(const ParseState& state, Attributes attributes, const End& end) {
    for (const Attribute attribute : attributes) {
        if (attribute.name == "groupRef") {
            StorageScene::Rigid* const group = Find(state.rigidMap, attribute.UInt32());
            if (group == nullptr) return false;
            end.rigid = group;
        } else if (!ReadComponent(attribute, 'a', end.a) && !ReadComponent(attribute, 'z', end.z)) {
            ReadComponent(attribute, 't', end.t);
        }
    }
    return true;
}

void StartGroupRef(ParseState& state, StorageScene::Joint& joint, Attributes attributes) {
    if (joint.rigid1 && joint.rigid2) return state.loader->Raise(New<JointError>(&joint));
    const End end = joint.rigid1 ? End{joint.rigid2, joint.a2, joint.z2, joint.t2}
                                 : End{joint.rigid1, joint.a1, joint.z1, joint.t1};
    if (!ReadEnd(state, attributes, end)) state.loader->Raise(New<JointError>(&joint));
    if (!IsUnit(end.a) || !IsUnit(end.z)) state.loader->Raise(New<JointError>(&joint));
}

// Pushes nothing, whatever the element is.
void StartInJoint(ParseState& state, std::string_view name, Attributes attributes) {
    if (name == "GroupRef") StartGroupRef(state, state.CurrentModel().joints.Back(), attributes);
}

void EndInJoint(ParseState& state, std::string_view name) {
    if (name != "Joint") return;
    const StorageScene::Joint& joint = state.CurrentModel().joints.Back();
    if (!joint.rigid1 || !joint.rigid2 || joint.rigid1 == joint.rigid2) {
        state.loader->Raise(New<JointError>(&joint));
    }
    state.PopHandlers();
}

}  // namespace

const Handlers kJoint{StartInJoint, EndInJoint};

}  // namespace ZEMA::WQFML4
