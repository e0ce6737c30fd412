// Scenes as text.
#pragma once

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "host/print/JsonWriter.h"
#include "host/print/SceneJson.h"

namespace ZEMA::testing {

// JSON without what has its default: nothing, zeros, the placement at the origin, a camera's field of view.
inline nlohmann::json Told(nlohmann::json value) {
    using Json = nlohmann::json;
    static const Json defaults = {
        "", 0, 80, false, nullptr, Json::array(), {0, 0, 0}, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    for (auto item = value.begin(); value.is_structured() && item != value.end();) {
        *item = Told(*item);
        item = value.is_object() && std::ranges::count(defaults, *item) != 0 ? value.erase(item) : std::next(item);
    }
    return value;
}

// What is told of a scene, or of a part of it, by its place as in "/bricks/0/parts".
inline std::string SceneText(const StorageScene2& scene, const std::string& place = "") {
    const auto json = nlohmann::json::parse(JsonOf([&](JsonWriter& writer) { WriteScene(scene, writer); }));
    return Told(json.at(nlohmann::json::json_pointer(place))).dump();
}

}  // namespace ZEMA::testing
