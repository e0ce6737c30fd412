// Format-4 documents as text, and what became of them.
#pragma once

#include <stdexcept>
#include <type_traits>

#include "core/RefPointer.h"
#include "loader/format4/ModelLoaderWQFML4.h"
#include "scene/StorageScene.h"
#include "scene/StorageScene2.h"
#include "tests/loader/SceneText.h"
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

// A document in which everything is right: cameras 1 and 2, groups 1 to 3 with parts 1 to 3, a joint, a step. Each
// element has an attribute first that it should not have.
inline std::string GoodDocument() {
    return "<WQFML x='' versionMajor='4' versionMinor='0'>"
           "<Meta><Application name='App'/></Meta>"
           "<Cameras><Camera x='' refID='1'/><Camera refID='2'/></Cameras>"
           "<Scene x='' cameraRefID='1'><Model x='' name='model'>"
           "<Group x='' refID='1'><Part x='' refID='1' designID='3005' materialID='21'/>"
           "<Part refID='2' designID='3004' materialID='21'/></Group>"
           "<Group refID='2'><Part refID='3' designID='3003' materialID='21'/></Group><Group refID='3'/>"
           "<Joint x='' name='joint'><GroupRef x='' groupRef='1' ax='0' ay='0' az='1'/><GroupRef groupRef='2'/></Joint>"
           "</Model></Scene>"
           "<BuildingInstructions><BuildingInstruction x='' cameraRefID='1'>"
           "<Step x='' cameraRefID='2'><PartRef x='' partRefID='1'/></Step>"
           "</BuildingInstruction></BuildingInstructions></WQFML>";
}

// `text` with its first `from` replaced; one that is not there is the test's own mistake.
inline std::string Broken(std::string text, const std::string& from, const std::string& to) {
    const std::size_t position = text.find(from);
    if (position == std::string::npos) throw std::logic_error("nothing to break: " + from);
    return text.replace(position, from.size(), to);
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
    std::string At(const std::string& place) const { return SceneText(*scene, place); }
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
