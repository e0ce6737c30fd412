// The scene: its models, with their groups of parts and the joints between them.
#include <cmath>
#include <optional>

#include "loader/DesignCatalogue.h"
#include "loader/ModelLoaderErrors.h"
#include "loader/format4/ParseState.h"

namespace ZEMA::WQFML4 {

namespace {

using Part = StorageScene::Part;

// The attributes of a part that say what it belongs to.
struct PartReferences {
    std::uint32_t refID = kAbsent;
    std::uint32_t flexRefID = kAbsent;
    std::uint32_t controlPoint = kAbsent;
    std::uint32_t assemblyRefID = kAbsent;
    std::uint32_t assemblyID = 0;  // 0 when absent
};

void ReadPart(Attributes attributes, Part& part, PartReferences& references, MemoryBlocks& blocks) {
    Placement placement;
    for (const Attribute attribute : attributes) {
        if (attribute.name == "refID") {
            references.refID = attribute.UInt32();
        } else if (attribute.name == "designID") {
            part.designID = attribute.UInt32();
        } else if (attribute.name == "materialID") {
            part.materials.PushBack(attribute.UInt32(), &blocks);
        } else if (attribute.name == "itemNos") {
            part.itemNos = attribute.Ascii();
        } else if (attribute.name == "flexRefID") {
            references.flexRefID = attribute.UInt32();
        } else if (attribute.name == "controlPoint") {
            references.controlPoint = attribute.UInt32();
        } else if (attribute.name == "assemblyRefID") {
            references.assemblyRefID = attribute.UInt32();
        } else if (attribute.name == "assemblyID") {
            references.assemblyID = attribute.UInt32();
        } else if (attribute.name == "name") {
            part.name = attribute.Text();
        } else {
            placement.Read(attribute);
        }
    }
    part.transformation = placement.Transformation();
}

// What is wrong with the part, as the detail of a PartError.
std::optional<PartError::Detail> FindFault(const Part& part, const PartReferences& references) {
    if (references.refID == kAbsent) return PartError::MissingRefID;
    if (part.materials.Size() != 1) return PartError::NotOneMaterial;
    if ((references.assemblyRefID != kAbsent) != (references.assemblyID != 0)) return PartError::Assembly;
    if ((references.flexRefID != kAbsent) != (references.controlPoint != kAbsent)) return PartError::Flex;
    return std::nullopt;
}

// Joined before its design is corrected: the flexible element keeps the design as the document gives it. A part that
// claims a taken control point replaces the one there, which still belongs to the flexible element.
void JoinFlex(ParseState& state, Part& part, const PartReferences& references) {
    if (references.flexRefID == kAbsent) return;
    part.flex = Find(state.flexMap, references.flexRefID);
    if (!part.flex) {
        part.flex = New<StorageScene::Flex>();
        part.flex->designID = part.designID;
        state.flexMap[references.flexRefID] = part.flex.Get();
        state.flexes.PushBack(part.flex.Get());
    }
    state.indexBudget.GrowToHold(part.flex->parts, references.controlPoint);
    part.flex->parts[references.controlPoint] = &part;
}

void JoinAssembly(ParseState& state, Part& part, const PartReferences& references) {
    if (references.assemblyID == 0) return;
    part.assembly = Find(state.assemblyMap, references.assemblyRefID);
    if (!part.assembly) {
        part.assembly = New<StorageScene::Assembly>();
        part.assembly->assemblyID = references.assemblyID;
        state.assemblyMap[references.assemblyRefID] = part.assembly.Get();
    }
    part.assembly->parts.PushBack(&part, &state.blocks);
}

// Documents that name no brick set, or one of version 0, are taken as they are.
void CorrectDesign(const Version& brickSetVersion, Part& part) {
    if (brickSetVersion.components[0] == 0) return;
    const LegacyCorrection* const correction = FindLegacyCorrection(part.designID);
    if (correction == nullptr) return;
    if (correction->successor != 0) {
        part.designID = correction->successor;
    } else if (brickSetVersion < Version(correction->fixedInMajor, correction->fixedInMinor)) {
        part.transformation = Matrix4::FromTranslation({kLegacyOffset, 0, 0}) * part.transformation;
    }
}

void StartInPart(ParseState& state, std::string_view name, Attributes attributes);
void EndInPart(ParseState& state, std::string_view name);

void StartPart(ParseState& state, Attributes attributes) {
    const RefPointer<Part> part = NewIn<Part>(state.blocks);
    PartReferences references;
    ReadPart(attributes, *part, references, state.blocks);
    if (const auto fault = FindFault(*part, references)) {
        return state.loader->Raise(New<PartError>(nullptr, *fault));
    }
    JoinFlex(state, *part, references);
    JoinAssembly(state, *part, references);
    CorrectDesign(state.brickSetVersion, *part);
    state.partMap[references.refID] = part.Get();
    state.CurrentModel().rigids.Back()->parts.PushBack(part, &state.blocks);
    state.PushHandlers({StartInPart, EndInPart});
}

// Entry 0 of the materials is the part's own, so a surface has a number from 1 on.
void StartSubMaterial(ParseState& state, Part& part, Attributes attributes) {
    std::uint32_t surfaceID = 0;
    std::uint32_t materialID = 0;
    for (const Attribute attribute : attributes) {
        if (attribute.name == "surfaceID") surfaceID = attribute.UInt32();
        if (attribute.name == "materialID") materialID = attribute.UInt32();
    }
    if (surfaceID == 0 || materialID == 0) return;
    state.indexBudget.GrowToHold(part.materials, surfaceID);
    part.materials[surfaceID] = materialID;
}

void StartDecoration(Part& part, Attributes attributes) {
    StorageScene::Decoration decoration;
    for (const Attribute attribute : attributes) {
        if (attribute.name == "surfaceID") decoration.surfaceID = attribute.UInt32();
        if (attribute.name == "decorationID") decoration.decorationID = attribute.UInt32();
    }
    part.decorations.PushBack(decoration);
}

void StartInPart(ParseState& state, std::string_view name, Attributes attributes) {
    Part& part = *state.CurrentModel().rigids.Back()->parts.Back();
    if (name == "SubMaterial") {
        StartSubMaterial(state, part, attributes);
    } else if (name == "Decoration") {
        StartDecoration(part, attributes);
    } else {
        state.Skip();
    }
}

void EndInPart(ParseState& state, std::string_view name) {
    state.PopHandlersAt("Part", name);
}

void StartInGroup(ParseState& state, std::string_view name, Attributes attributes) {
    if (name == "Part") {
        StartPart(state, attributes);
    } else {
        state.Skip();
    }
}

void EndInGroup(ParseState& state, std::string_view name) {
    state.PopHandlersAt("Group", name);
}

const Handlers kGroup{StartInGroup, EndInGroup};

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

const Handlers kJoint{StartInJoint, EndInJoint};

void StartGroup(ParseState& state, Attributes attributes) {
    const RefPointer<StorageScene::Rigid> group = NewIn<StorageScene::Rigid>(state.blocks);
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
