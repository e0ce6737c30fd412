#include "host/print/ScenePositions.h"

namespace ZEMA {

ScenePositions::ScenePositions(const StorageScene2& scene) {
    for (std::size_t i = 0; i < scene.cameras.Size(); ++i) cameras_.try_emplace(scene.cameras[i].Get(), Position<1>{i});
    EnterParts(scene);
    EnterRigids(scene);
}

void ScenePositions::EnterParts(const StorageScene2& scene) {
    for (std::size_t i = 0; i < scene.bricks.Size(); ++i) {
        const auto& parts = scene.bricks[i]->parts;
        for (std::size_t j = 0; j < parts.Size(); ++j) {
            const auto& bones = parts[j]->bones;
            parts_.try_emplace(parts[j].Get(), Position<2>{i, j});
            for (std::size_t k = 0; k < bones.Size(); ++k) bones_.try_emplace(bones[k].Get(), Position<3>{i, j, k});
        }
    }
}

void ScenePositions::EnterRigids(const StorageScene2& scene) {
    for (std::size_t i = 0; i < scene.rigidSystems.Size(); ++i) {
        const auto& rigids = scene.rigidSystems[i].rigids;
        for (std::size_t j = 0; j < rigids.Size(); ++j) rigids_.try_emplace(rigids[j].Get(), Position<2>{i, j});
    }
}

}  // namespace ZEMA
