// A format-5 document as text, and what became of it.
#pragma once

#include "core/RefPointer.h"
#include "loader/format5/ModelLoaderWQFML5.h"
#include "scene/StorageScene2.h"
#include "tests/loader/SceneText.h"
#include "tests/loader/Texts.h"

namespace ZEMA::testing {

inline std::string Wqfml(const std::string& sections) {
    return "<WQFML versionMajor='5'>" + sections + "</WQFML>";
}

inline std::string Bricks(const std::string& bricks) {
    return "<Bricks>" + bricks + "</Bricks>";
}

// One brick of one part, part 1, of one bone, bone 1.
inline std::string BrickWithBone() {
    return "<Brick refID='1' designID='1'><Part refID='1' designID='2' materials='3'><Bone refID='1'/></Part></Brick>";
}

struct LoadedDocument {
    explicit LoadedDocument(const std::string& text, const RefPointer<DesignTemplates>& templates = nullptr)
        : loader(New<ModelLoaderWQFML5>(templates)), scene(New<StorageScene2>()) {
        succeeded = loader->Load(Bytes(text), scene.Get(), 1);
    }

    Words Errors() const { return Descriptions(*loader); }
    std::string At(const std::string& place = "") const { return SceneText(*scene, place); }
    StorageScene2::Part& Part(std::size_t brick, std::size_t part = 0) const {
        return *scene->bricks[brick]->parts[part];
    }

    RefPointer<ModelLoaderWQFML5> loader;
    RefPointer<StorageScene2> scene;
    bool succeeded = false;
};

}  // namespace ZEMA::testing
