// The document itself and its root element.
#include "loader/ModelLoaderErrors.h"
#include "loader/format4/ModelLoaderWQFML4State.h"

namespace ZEMA::WQFML4 {

namespace {

// The scene's attribute stands for the camera that shows it.
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

}  // namespace

const Handlers kDocument{StartInDocument, EndInDocument};

}  // namespace ZEMA::WQFML4
