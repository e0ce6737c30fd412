// The list of cameras.
#include "loader/ModelLoaderErrors.h"
#include "loader/format4/ModelLoaderWQFML4State.h"

namespace ZEMA::WQFML4 {

namespace {

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

}  // namespace

const Handlers kCameras{StartInCameras, EndInCameras};

}  // namespace ZEMA::WQFML4
