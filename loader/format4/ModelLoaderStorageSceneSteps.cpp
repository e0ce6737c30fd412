// The conversion of building instructions.
#include "core/BasicDeque.h"
#include "loader/format4/ModelLoaderStorageScene.h"

namespace ZEMA {

namespace {

using Steps = BasicArray<RefPointer<StorageScene::BIStep>>;
using Events = BasicArray<RefPointer<StorageScene2::BIEvent>>;

// A list of steps that is being converted.
struct OpenList {
    const Steps* steps;
    std::size_t next;             // of `steps`
    Events* events;               // what the steps become
    StorageScene::BIStep* owner;  // which the list is nested in; null for an instruction's own
};

void AppendCamera(const RefPointer<StorageScene2::Camera>& camera, Events& events) {
    if (!camera) return;
    const auto event = New<StorageScene2::BICamera>();
    event->camera = camera;
    events.PushBack(event);
}

Events& AppendStep(const StorageScene::BIStep& step, Events& events) {
    const auto event = New<StorageScene2::BIStep>();
    event->name = step.name;
    event->exploded = step.exploded;
    event->a = step.a;
    events.PushBack(event);
    return event->events;
}

}  // namespace

// Steps may nest as deep as a document says, so the lists that are open are kept here and not on the call stack.
void ModelLoaderStorageScene::ConvertSteps(const Steps& steps, Events& events) {
    BasicDeque<OpenList> open;
    open.PushBack({&steps, 0, &events, nullptr});
    while (!open.Empty()) {
        OpenList& list = open.Back();
        if (list.next < list.steps->Size()) {
            StorageScene::BIStep& step = *(*list.steps)[list.next++];
            AppendCamera(step.camera, *list.events);
            open.PushBack({&step.steps, 0, &AppendStep(step, *list.events), &step});
        } else {
            if (list.owner != nullptr) ConvertPlacedParts(*list.owner, *list.events);
            open.PopBack();
        }
    }
}

void ModelLoaderStorageScene::ConvertPlacedParts(StorageScene::BIStep& step, Events& events) {
    for (StorageScene::BIPart& placed : step.parts) {
        const auto position = partParts.Find(placed.part.Get());
        if (position == partParts.end() || !PlaceOnce(placed.part->flex.Get())) continue;
        placed.transformation.Sanitise();
        const auto event = New<StorageScene2::BIPart>(RefPointer<StorageScene2::Part>(position->second));
        event->exploded = placed.exploded;
        event->transformation = placed.transformation;
        events.PushBack(event);
    }
}

// A flexible element is placed with the first of its control points; false for the others.
bool ModelLoaderStorageScene::PlaceOnce(StorageScene::Flex* flex) {
    if (flex == nullptr) return true;
    if (!placed_.Insert(flex)) return false;
    placedFlexes.PushBack(flex);
    return true;
}

}  // namespace ZEMA
