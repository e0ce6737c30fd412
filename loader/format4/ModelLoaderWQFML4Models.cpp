// The scene: its models and their groups.
#include "loader/format4/ModelLoaderWQFML4State.h"

namespace ZEMA::WQFML4 {

namespace {

void StartGroup(ParseState& state, Attributes attributes) {
    const RefPointer<StorageScene::Rigid> group = New<StorageScene::Rigid>();
    std::uint32_t refID = kAbsent;
    Placement placement;
    for (const Attribute attribute : attributes) {
        if (attribute.name == "refID") {
            refID = attribute.UInt32();
        } else if (attribute.name == "name") {
            group->name = attribute.Text();
        } else {
            placement.Read(attribute);
        }
    }
    group->transformation = placement.Transformation();
    if (refID != kAbsent) state.rigidMap[refID] = group.Get();
    state.CurrentModel().rigids.PushBack(group);
    state.PushHandlers(kGroup);
}

void StartJoint(ParseState& state, Attributes attributes) {
    state.CurrentModel().joints.PushBack({});
    StorageScene::Joint& joint = state.CurrentModel().joints.Back();
    for (const Attribute attribute : attributes) {
        if (attribute.name == "name") {
            joint.name = attribute.Text();
        } else if (attribute.name == "type") {
            joint.type = std::string_view(attribute.value) == "hinge" ? 1 : 0;
        }
    }
    state.PushHandlers(kJoint);
}

void StartInModel(ParseState& state, std::string_view name, Attributes attributes) {
    if (name == "Group") {
        StartGroup(state, attributes);
    } else if (name == "Joint" && !state.HasOption(ModelLoaderWQFML4::kSkipJoints)) {
        StartJoint(state, attributes);
    } else {
        state.Skip();
    }
}

void EndInModel(ParseState& state, std::string_view name) {
    state.PopHandlersAt("Model", name);
}

void StartInScene(ParseState& state, std::string_view name, Attributes attributes) {
    if (name != "Model") return state.Skip();
    state.scene->models.PushBack({});
    for (const Attribute attribute : attributes) {
        if (attribute.name == "name") state.CurrentModel().name = attribute.Text();
    }
    state.PushHandlers({StartInModel, EndInModel});
}

void EndInScene(ParseState& state, std::string_view name) {
    state.PopHandlersAt("Scene", name);
}

}  // namespace

const Handlers kScene{StartInScene, EndInScene};

}  // namespace ZEMA::WQFML4
