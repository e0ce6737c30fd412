// Format-4 documents as text, and what became of them.
#pragma once

#include <type_traits>

#include "core/RefPointer.h"
#include "loader/format4/ModelLoaderWQFML4.h"
#include "scene/StorageScene.h"
#include "scene/StorageScene2.h"
#include "tests/loader/DocumentCases.h"
#include "tests/loader/Texts.h"

namespace ZEMA::testing {

inline std::string Root(const std::string& sections) {
    return "<WQFML versionMajor='4' versionMinor='0'>" + sections + "</WQFML>";
}

inline std::string Model(const std::string& content) {
    return "<Scene><Model name='model'>" + content + "</Model></Scene>";
}

// One group, number 1, of these parts.
inline std::string Group(const std::string& parts) {
    return Model("<Group refID='1'>" + parts + "</Group>");
}

// The attributes that a part must have, and others.
inline std::string Part(int refID, const std::string& attributes = "", const std::string& content = "") {
    return "<Part refID='" + std::to_string(refID) + "' materialID='21' " + attributes + ">" + content + "</Part>";
}

inline std::string Instruction(const std::string& steps) {
    return "<BuildingInstructions><BuildingInstruction name='bi'>" + steps +
           "</BuildingInstruction></BuildingInstructions>";
}

inline std::string Step(const std::string& attributes, const std::string& content = "") {
    return "<Step " + attributes + ">" + content + "</Step>";
}

inline std::string PartRef(int part, const std::string& attributes = "") {
    return "<PartRef partRefID='" + std::to_string(part) + "' " + attributes + "/>";
}

// What a document gives: the scene of format 4, joints included, or the one that it is converted into.
template <class Scene>
struct Loaded {
    explicit Loaded(const std::string& text, std::uint32_t options = 0) {
        if constexpr (std::is_same_v<Scene, StorageScene>) {
            succeeded = loader->LoadScene(Bytes(text), scene.Get(), options);
        } else {
            succeeded = loader->Load(Bytes(text), scene.Get(), options);
        }
    }

    Scene* operator->() const { return scene.Get(); }
    // Of the first model.
    StorageScene::Rigid& Group(std::size_t index) const { return *scene->models[0].rigids[index]; }
    StorageScene::Part& Part(std::size_t part) const { return *Group(0).parts[part]; }

    RefPointer<ModelLoaderWQFML4> loader = New<ModelLoaderWQFML4>();
    RefPointer<Scene> scene = New<Scene>();
    bool succeeded = false;
};

using LoadedScene = Loaded<StorageScene>;
using ConvertedDocument = Loaded<StorageScene2>;

}  // namespace ZEMA::testing
