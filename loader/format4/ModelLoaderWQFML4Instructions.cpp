// Building instructions: nested steps that place parts.
#include "loader/ModelLoaderErrors.h"
#include "loader/format4/ParseState.h"

namespace ZEMA::WQFML4 {

namespace {

using BIStep = StorageScene::BIStep;

void ReadCamera(ParseState& state, const Attribute& attribute, RefPointer<StorageScene2::Camera>& camera) {
    if (StorageScene2::Camera* const found = Find(state.cameraMap, attribute.UInt32())) {
        camera = found;
    } else if (!state.HasOption(ModelLoaderWQFML4::kAllowUnknownCameras)) {
        state.loader->Raise(New<BIError>(BIError::NonExistingCamera));
    }
}

void StartPartRef(ParseState& state, Attributes attributes) {
    std::uint32_t partRefID = kAbsent;
    StorageScene::BIPart placed;
    Placement placement;
    for (const Attribute attribute : attributes) {
        if (attribute.name == "partRefID") {
            partRefID = attribute.UInt32();
        } else if (attribute.name == "exploded") {
            placed.exploded = true;
        } else {
            placement.Read(attribute);
        }
    }
    placed.part = Find(state.partMap, partRefID);
    if (!placed.part) return state.loader->Raise(New<BIError>(BIError::NonExistingPart));
    if (placed.exploded) placed.transformation = placement.Transformation();
    state.stepStack.Back()->parts.PushBack(placed);
}

void StartStep(ParseState& state, Attributes attributes, BasicArray<RefPointer<BIStep>>& steps);

void StartInStep(ParseState& state, std::string_view name, Attributes attributes) {
    if (name == "PartRef") {
        StartPartRef(state, attributes);
    } else if (name == "Step") {
        StartStep(state, attributes, state.stepStack.Back()->steps);
    } else {
        state.Skip();
    }
}

void EndInStep(ParseState& state, std::string_view name) {
    if (name != "Step") return;
    state.stepStack.PopBack();
    state.PopHandlers();
}

void StartStep(ParseState& state, Attributes attributes, BasicArray<RefPointer<BIStep>>& steps) {
    const RefPointer<BIStep> step = NewIn<BIStep>(state.blocks);
    for (const Attribute attribute : attributes) {
        if (attribute.name == "name") {
            step->name = attribute.Text();
        } else if (attribute.name == "cameraRefID") {
            ReadCamera(state, attribute, step->camera);
        } else if (attribute.name == "exploded") {
            step->exploded = true;
        } else {
            ReadComponent(attribute, 'a', step->a);
        }
    }
    steps.PushBack(step);
    state.stepStack.PushBack(step.Get());
    state.PushHandlers({StartInStep, EndInStep});
}

void StartInInstruction(ParseState& state, std::string_view name, Attributes attributes) {
    if (name == "Step") {
        StartStep(state, attributes, state.scene->buildingInstructions.Back().steps);
    } else {
        state.Skip();
    }
}

void EndInInstruction(ParseState& state, std::string_view name) {
    state.PopHandlersAt("BuildingInstruction", name);
}

void StartInInstructions(ParseState& state, std::string_view name, Attributes attributes) {
    if (name != "BuildingInstruction") return state.Skip();
    StorageScene::BI instruction;
    for (const Attribute attribute : attributes) {
        if (attribute.name == "name") instruction.name = attribute.Text();
        if (attribute.name == "cameraRefID") ReadCamera(state, attribute, instruction.camera);
    }
    state.scene->buildingInstructions.PushBack(instruction);
    state.PushHandlers({StartInInstruction, EndInInstruction});
}

void EndInInstructions(ParseState& state, std::string_view name) {
    state.PopHandlersAt("BuildingInstructions", name);
}

}  // namespace

const Handlers kBuildingInstructions{StartInInstructions, EndInInstructions};

}  // namespace ZEMA::WQFML4
