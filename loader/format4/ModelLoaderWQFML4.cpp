#include "loader/format4/ModelLoaderWQFML4.h"

#include <algorithm>

#include "loader/ModelLoaderErrors.h"
#include "loader/format4/ParseState.h"

namespace ZEMA {

namespace WQFML4 {

namespace {

// Text behind an element in an entry is no part of the entry's value.
void StartInEntry(ParseState& state, std::string_view, Attributes) {
    state.EndText();
    state.Skip();
}

void EndInEntry(ParseState& state, std::string_view) {
    state.EndText();
    state.PopHandlers();
}

String AsciiOf(std::string_view text) {
    String result;
    result.AssignBytes(text.data(), static_cast<std::uint32_t>(text.size()));
    return result;
}

// A text that is no version changes nothing, and components that it does not reach keep what an earlier entry gave.
void ReadBrickSetVersion(ParseState& state, const String& text) {
    std::uint32_t position = 0;
    state.brickSetVersion.ParseFrom(text, position);
}

void StartInMeta(ParseState& state, std::string_view name, Attributes attributes) {
    state.scene->meta.PushBack({});
    StorageScene2::Meta& entry = state.scene->meta.Back();
    entry.name = AsciiOf(name);
    for (const Attribute attribute : attributes) {
        entry.attributes.PushBack({AsciiOf(attribute.name), attribute.Ascii()});
        if (name == "BrickSet" && attribute.name == "version") {
            ReadBrickSetVersion(state, entry.attributes.Back().value);
        }
    }
    state.PushHandlers({StartInEntry, EndInEntry});
    state.BeginText();
}

void EndInMeta(ParseState& state, std::string_view name) {
    state.PopHandlersAt("Meta", name);
}

const Handlers kMeta{StartInMeta, EndInMeta};

// Pushes nothing, so what is in a camera is read as if it stood beside it.
void StartCamera(ParseState& state, Attributes attributes) {
    const RefPointer<StorageScene2::Camera> camera = New<StorageScene2::Camera>();
    std::uint32_t refID = kAbsent;
    Placement placement;
    for (const Attribute attribute : attributes) {
        if (attribute.name == "name") {
            camera->name = attribute.Text();
        } else if (attribute.name == "refID") {
            refID = attribute.UInt32();
        } else if (attribute.name == "distance") {
            camera->distance = attribute.Float();
        } else if (attribute.name == "fieldOfView") {
            camera->fieldOfView = attribute.Float();
        } else if (attribute.name == "orthographic") {
            camera->orthographic = std::string_view(attribute.value) == "true";
        } else {
            placement.Read(attribute);
        }
    }
    if (refID == kAbsent) return state.loader->Raise(New<CameraError>(CameraError::MissingRefID));
    camera->transformation = placement.Transformation();
    state.cameraMap[refID] = camera.Get();
    state.scene->cameras.PushBack(camera);
}

void StartInCameras(ParseState& state, std::string_view name, Attributes attributes) {
    if (name == "Camera") {
        StartCamera(state, attributes);
    } else {
        state.Skip();
    }
}

void EndInCameras(ParseState& state, std::string_view name) {
    state.PopHandlersAt("Cameras", name);
}

const Handlers kCameras{StartInCameras, EndInCameras};

// The scene is shown by the camera that it names.
void StartScene(ParseState& state, Attributes attributes) {
    for (const Attribute attribute : attributes) {
        if (attribute.name != "cameraRefID") continue;
        if (StorageScene2::Camera* const camera = Find(state.cameraMap, attribute.UInt32())) {
            state.scene->camera = camera;
        } else {
            state.loader->Raise(New<CameraError>(CameraError::NonExistingCamera));
        }
    }
    state.PushHandlers(kScene);
}

void StartInRoot(ParseState& state, std::string_view name, Attributes attributes) {
    if (name == "Meta") {
        state.PushHandlers(kMeta);
    } else if (name == "Cameras") {
        state.PushHandlers(kCameras);
    } else if (name == "Scene") {
        StartScene(state, attributes);
    } else if (name == "BuildingInstructions") {
        state.PushHandlers(kBuildingInstructions);
    } else {
        state.Skip();
    }
}

void EndInRoot(ParseState& state, std::string_view name) {
    state.PopHandlersAt("WQFML", name);
}

Version VersionOf(Attributes attributes) {
    Version version;
    for (const Attribute attribute : attributes) {
        if (attribute.name == "versionMajor") version.components[0] = attribute.UInt32();
        if (attribute.name == "versionMinor") version.components[1] = attribute.UInt32();
    }
    return version;
}

// A root of another version pushes nothing, so its children come here as well. That is how a second root is met: it is
// read, above handlers that skip what follows it.
void StartInDocument(ParseState& state, std::string_view name, Attributes attributes) {
    if (name != "WQFML") return state.Skip();
    if (++state.rootCount > 1) state.Skip();
    const Version expected(4);
    const Version actual = VersionOf(attributes);
    if (actual == expected) {
        state.PushHandlers({StartInRoot, EndInRoot});
    } else {
        state.loader->Raise(New<VersionError>(expected, actual));
    }
}

void EndInDocument(ParseState&, std::string_view) {}

const Handlers kDocument{StartInDocument, EndInDocument};

// Whether a part stands at each control point, all of them in one assembly or all in none.
bool IsComplete(const StorageScene::Flex& flex) {
    return std::all_of(flex.parts.begin(), flex.parts.end(), [&](const StorageScene::Part* part) {
        return part != nullptr && flex.parts[0] != nullptr && part->assembly == flex.parts[0]->assembly;
    });
}

}  // namespace

}  // namespace WQFML4

ModelLoaderWQFML4::ModelLoaderWQFML4() = default;
ModelLoaderWQFML4::~ModelLoaderWQFML4() = default;

bool ModelLoaderWQFML4::LoadScene(AString content, StorageScene* scene, std::uint32_t options) {
    scene->Clear();
    ClearErrors();
    indexBudget = IndexBudget(content.Length());
    WQFML4::ParseState state(*this, scene, options, indexBudget, WQFML4::kDocument);
    const bool parsed = state.Parse(std::move(content));
    state.EndText();  // where the document breaks off in a metadata entry
    if (!parsed) {
        Raise(New<ParserError>());
        return false;
    }
    if (errorMask != 0) return false;
    if (state.rootCount == 0) {
        Raise(New<ContentError>(ContentError::MissingWQFMLTag));
        return false;
    }
    return std::all_of(state.flexes.begin(), state.flexes.end(),
                       [](const StorageScene::Flex* flex) { return WQFML4::IsComplete(*flex); });
}

}  // namespace ZEMA
