#include "scene/StorageScene.h"

#include "core/ReleaseDeep.h"

namespace ZEMA {

StorageScene::StorageScene() = default;
StorageScene::~StorageScene() = default;

StorageScene::Rigid::~Rigid() = default;
StorageScene::Part::~Part() = default;

// In a loop, since steps may nest deeper than the stack.
StorageScene::BIStep::~BIStep() {
    ReleaseDeep(steps, [](BIStep& step) { return &step.steps; });
}

void StorageScene::Clear() {
    name.Clear();
    cameras.Clear();
    models.Clear();
    buildingInstructions.Clear();
    selections.Clear();
}

}  // namespace ZEMA
