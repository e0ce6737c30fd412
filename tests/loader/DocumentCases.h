// Documents in files, with what comes of them:
//
//     == What the case shows
//     <WQFML ...>...</WQFML>
//     -- loads
//     an error in words
//     /bricks/0/parts [{"designID": 4}]
//
// "loads" or "fails" is the loader's answer, "with 3" behind it the option bits. The errors follow, in order, and the
// places in the scene that are looked at; what has its default is not told of them. JSON goes on in indented lines. In
// the place of a document "~ this ~ that" stands for the file's first one with this replaced by that.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "core/RefPointer.h"
#include "host/print/JsonWriter.h"
#include "host/print/SceneJson.h"
#include "tests/loader/Texts.h"

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

struct DocumentCase {
    std::string what;
    std::string document;
    std::string answer;
    std::uint32_t options = 0;
    Words errors;
    std::vector<std::pair<std::string, std::string>> places;  // and what is told there
};

// `text` with its first `from` replaced; one that is not there is the test's own mistake.
inline std::string Broken(std::string text, const std::string& from, const std::string& to) {
    const std::size_t position = text.find(from);
    if (position == std::string::npos) throw std::logic_error("nothing to break: " + from);
    return text.replace(position, from.size(), to);
}

inline std::vector<DocumentCase> ReadCases(const std::string& path) {
    std::vector<DocumentCase> cases;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("== ")) {
            cases.emplace_back().what = line.substr(3);
        } else if (cases.empty() || line.empty()) {
            continue;
        } else if (DocumentCase& one = cases.back(); line.starts_with("-- ")) {
            one.answer = line.substr(3, 5);
            if (const std::size_t with = line.find(" with "); with != std::string::npos) {
                one.options = static_cast<std::uint32_t>(std::stoul(line.substr(with + 6)));
            }
        } else if (one.answer.empty() && line.starts_with("~ ")) {
            const std::size_t middle = line.find(" ~", 2);
            if (one.document.empty()) one.document = cases[0].document;
            one.document =
                Broken(one.document, line.substr(2, middle - 2), line.substr(std::min(middle + 3, line.size())));
        } else if (one.answer.empty()) {
            one.document += one.document.empty() ? line : "\n" + line;
        } else if (line.starts_with("/")) {
            const std::size_t blank = line.find(' ');
            one.places.emplace_back(line.substr(0, blank), line.substr(blank));
        } else if (line.starts_with("  ")) {
            one.places.back().second += line;
        } else {
            one.errors.push_back(line);
        }
    }
    return cases;
}

// Numbers may differ by what a rotation rounds off.
inline bool IsAlike(const nlohmann::json& a, const nlohmann::json& b) {
    if (a.is_number() && b.is_number()) return std::abs(a.get<double>() - b.get<double>()) < 1e-6;
    if (a.type() != b.type() || a.size() != b.size() || !a.is_structured()) return a == b;
    for (auto one = a.begin(), other = b.begin(); one != a.end(); ++one, ++other) {
        if (!IsAlike(*one, *other) || (a.is_object() && one.key() != other.key())) return false;
    }
    return true;
}

// Loads every document of the file in a loader and a scene of its own.
template <class Loader>
void ExpectCases(const std::string& path) {
    const std::vector<DocumentCase> cases = ReadCases(path);
    EXPECT_FALSE(cases.empty()) << path;
    for (const DocumentCase& one : cases) {
        SCOPED_TRACE(one.what);
        const RefPointer<ModelLoader> loader = New<Loader>();
        const auto scene = New<StorageScene2>();
        EXPECT_EQ(loader->Load(Bytes(one.document), scene.Get(), one.options) ? "loads" : "fails", one.answer);
        EXPECT_EQ(Descriptions(*loader), one.errors);
        for (const auto& [place, expected] : one.places) {
            const std::string found = SceneText(*scene, place == "/" ? "" : place);
            EXPECT_TRUE(IsAlike(nlohmann::json::parse(found), nlohmann::json::parse(expected)))
                << place << " " << found;
        }
    }
}

}  // namespace ZEMA::testing
