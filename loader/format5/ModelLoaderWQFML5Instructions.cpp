// Building instructions, whose steps nest as deep as a document says.
#include "core/BasicDeque.h"
#include "loader/ModelLoaderErrors.h"
#include "loader/format5/AttributeReader.h"
#include "loader/format5/ChildElements.h"
#include "loader/format5/ModelLoaderWQFML5.h"
#include "loader/format5/Transformations.h"

namespace ZEMA {

namespace {

// An instruction or a step whose children are being read. Neither the node nor the list moves meanwhile.
struct OpenElement {
    const XMLDOMNodeAString* node;
    BasicArray<RefPointer<StorageScene2::BIEvent>>* events;
    std::size_t nextChild;
};

RefPointer<StorageScene2::BIStep> ReadStep(const XMLDOMNodeAString& node) {
    const RefPointer<StorageScene2::BIStep> step = New<StorageScene2::BIStep>();
    ReadString(node, "name", step->name);
    ReadBool(node, "exploded", step->exploded);
    if (step->exploded) ReadVector3(node, "a", step->a);
    step->events.Reserve(node.children.Size());
    return step;
}

}  // namespace

bool ModelLoaderWQFML5::ReadInstructions(const Node& root, StorageScene2& scene) {
    const Node* section = FindSection(root, "BuildingInstructions");
    if (section == nullptr) return true;
    scene.buildingInstructions.Reserve(CountChildren(*section, "BuildingInstruction"));
    return ReadChildren(*section, "BuildingInstruction", [&](const Node& child) {
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
    BasicDeque<OpenElement> open;
    open.PushBack({&node, &events, 0});
    while (!open.Empty()) {
        OpenElement& top = open.Back();
        if (top.nextChild == top.node->children.Size()) {
            open.PopBack();
            continue;
        }
        const Node& child = *top.node->children[top.nextChild++];
        if (child.name == "Step") {
            const RefPointer<StorageScene2::BIStep> step = ReadStep(child);
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
    const RefPointer<StorageScene2::BIPart> event = New<StorageScene2::BIPart>(nullptr);
    events.PushBack(event);
    ReadReference(node, "partRef", partMap, event->part);
    if (!event->part) return Fail(New<BIError>(BIError::NonExistingPart));
    ReadBool(node, "exploded", event->exploded);
    if (event->exploded) event->transformation = ReadTransformation(node);
    return true;
}

}  // namespace ZEMA
