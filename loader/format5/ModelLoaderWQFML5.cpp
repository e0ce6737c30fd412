#include "loader/format5/ModelLoaderWQFML5.h"

#include <utility>

#include "loader/ModelLoaderErrors.h"
#include "loader/format5/ElementReader.h"
#include "loader/format5/WQFML5Tester.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

namespace {

void ReadMetaEntry(const XMLDOMNodeAString& node, StorageScene2::Meta& entry) {
    node.GetName(entry.name);
    node.GetText(entry.value);
    entry.attributes.Reserve(node.attributes.Size());
    for (const auto& [key, value] : node.attributes)
        entry.attributes.PushBack({FromUtf8(key.View()), FromUtf8(value.View())});
}

}  // namespace

ModelLoaderWQFML5::ModelLoaderWQFML5(const RefPointer<DesignTemplates>& source) : designTemplates(source) {}

ModelLoaderWQFML5::~ModelLoaderWQFML5() = default;

bool ModelLoaderWQFML5::Load(AString content, StorageScene2* scene, std::uint32_t /*options*/) {
    Reset(*scene);
    const RefPointer<XMLDOMAString> document = New<XMLDOMAString>();
    const RefPointer<WQFML5Tester> tester = New<WQFML5Tester>(this);
    if (!document->Parse(std::move(content), tester.Get())) return errorMask == 0 ? Fail(New<ParserError>()) : false;
    return IsWQFML5Root(*document, *this) && ReadDocument(*document, *scene);
}

void ModelLoaderWQFML5::Reset(StorageScene2& scene) {
    ClearErrors();
    cameraMap.Clear();
    brickMap.Clear();
    partMap.Clear();
    boneMap.Clear();
    rigidMap.Clear();
    droppedParts_.Clear();
    scene.name.Clear();
    scene.cameras.Clear();
    scene.bricks.Clear();
    scene.rigidSystems.Clear();
    scene.groupSystems.Clear();
    scene.buildingInstructions.Clear();
    scene.meta.Clear();
    scene.bricksCamera.Reset();
}

bool ModelLoaderWQFML5::ReadDocument(const Node& root, StorageScene2& scene) {
    ReadString(root, "name", scene.name);
    ReadMeta(root, scene);
    const bool cameras = ReadCameras(root, scene);
    const Node* behaviorSection = FindSection(root, "Behaviors");
    const bool behaviors = behaviorSection == nullptr || ReadBehaviors(*behaviorSection, scene.behaviors);
    if (!ReadBricks(root, scene)) return false;
    const bool groups = ReadGroupSystems(root, scene);
    const bool rigids = ReadRigidSystems(root, scene);
    const bool instructions = ReadInstructions(root, scene);
    return cameras && behaviors && groups && rigids && instructions;
}

void ModelLoaderWQFML5::ReadMeta(const Node& root, StorageScene2& scene) {
    const Node* section = FindSection(root, "Meta");
    if (section == nullptr) return;
    scene.meta.Reserve(section->children.Size());
    for (const auto& child : section->children) {
        scene.meta.PushBack({});
        ReadMetaEntry(*child, scene.meta.Back());
        String version;
        if (child->name == "BrickSet" && ReadString(*child, "version", version)) {
            std::uint32_t position = 0;
            brickSetVersion.ParseFrom(version, position);
        }
    }
}

bool ModelLoaderWQFML5::ReadCameras(const Node& root, StorageScene2& scene) {
    const Node* section = FindSection(root, "Cameras");
    if (section == nullptr) return true;
    scene.cameras.Reserve(CountChildren(*section, "Camera"));
    return ReadChildren(*section, "Camera", [&](const Node& child) { return ReadCamera(child, scene); });
}

bool ModelLoaderWQFML5::ReadCamera(const Node& node, StorageScene2& scene) {
    std::uint32_t refID = 0;
    if (!ReadUnsigned(node, "refID", refID)) return Fail(New<CameraError>(CameraError::MissingRefID));
    if (cameraMap.Contains(refID)) return Fail(New<CameraError>(CameraError::ReusedRefID));
    const RefPointer<StorageScene2::Camera> camera = New<StorageScene2::Camera>();
    ReadString(node, "name", camera->name);
    ReadFloat(node, "distance", camera->distance);
    ReadFloat(node, "fieldOfView", camera->fieldOfView);
    // Documents may hold a number here, which readers of this format have always taken as a second field of view.
    ReadFloat(node, "orthographic", camera->fieldOfView);
    camera->transformation = ReadTransformation(node);
    cameraMap.Insert(refID, camera.Get());
    scene.cameras.PushBack(camera);
    return true;
}

bool ModelLoaderWQFML5::Fail(const RefPointer<Error>& error) {
    Raise(error);
    return false;
}

}  // namespace ZEMA
