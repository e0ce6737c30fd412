// Random models, each written in both formats of the markup, must come to the same scene.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>

#include "host/print/JsonWriter.h"
#include "host/print/SceneJson.h"
#include "loader/format4/ModelLoaderWQFML4.h"
#include "loader/format5/ModelLoaderWQFML5.h"

namespace ZEMA::testing {

namespace {

using Json = nlohmann::ordered_json;
using Numbers = std::vector<std::size_t>;

struct Placement {
    Vector3 axis, move;
    std::size_t degrees;

    Matrix4 Matrix() const {
        return Matrix4::FromAxisAngle(axis, static_cast<float>(degrees) * kRadiansPerDegree, move);
    }
};

// Of one part or, where it is flexible, of its pieces at all control points.
struct Part {
    std::size_t brick, design;
    bool isFlexible;
    Numbers materials, decoration;  // by surface; 0 stands for none
    Numbers pieces;                 // by control point
};

struct Brick {
    std::size_t assembly;  // its design, or 0
    Numbers parts;
};

// "Part" in format 4, "Bone" in format 5.
struct Piece {
    std::size_t part;
    std::size_t point;
    Placement placement;
    Matrix4 standing;  // in the model
};

struct Group {
    Placement placement;
    Numbers pieces;
};

struct Joint {
    std::size_t groups[2];  // of the system
    Vector3 a, t;           // of the first end
    bool isHinge;
};

struct System {
    std::size_t firstGroup;  // counted through all systems
    std::vector<Group> groups;
    std::vector<Joint> joints;
};

struct Placed {
    std::size_t piece;
    bool exploded;
    Placement placement;
};

struct Step {
    std::optional<std::size_t> camera;
    bool exploded;
    std::vector<Placed> pieces;
    std::vector<Step> steps;
};

std::string Text(const char* name, const Vector3& vector) {
    const auto component = [&](char axis, float value) {
        return " " + std::string(name) + axis + "='" + std::to_string(value) + "'";
    };
    return component('x', vector.x) + component('y', vector.y) + component('z', vector.z);
}

std::string Text(const char* name, std::size_t number) {
    return " " + std::string(name) + "='" + std::to_string(number) + "'";
}

std::string Text(const Placement& placement) {
    return Text("a", placement.axis) + Text("t", placement.move) + Text("angle", placement.degrees);
}

std::string List(const char* name, const Numbers& numbers, std::size_t first = 0) {
    std::string text;
    for (std::size_t i = first; i < numbers.size(); ++i) text += (i == first ? "" : ",") + std::to_string(numbers[i]);
    return text.empty() ? "" : " " + std::string(name) + "='" + text + "'";
}

std::string Text(const Matrix4& matrix) {
    std::string text;
    for (std::size_t i = 0; i < 15; ++i) {
        if (i % 4 != 3) text += (text.empty() ? "" : ",") + std::to_string(matrix.m[i]);
    }
    return " transformation='" + text + "'";
}

std::string Enclosed(const std::string& element, const std::string& attributes, const std::string& content) {
    return "<" + element + attributes + ">" + content + "</" + element + ">";
}

// A valid model of what both formats can say. Assemblies and flexible elements have pieces in any groups, in any order.
class GeneratedModel {
public:
    explicit GeneratedModel(std::uint32_t seed) : random_(seed) {
        for (std::size_t i = Below(4) + 1; i > 0; --i) cameras_.push_back(AnyPlacement());
        Numbers waiting;  // pieces of bricks that are begun
        for (std::size_t i = Below(3) + 1; i > 0; --i) MakeSystem(waiting);
        BeginSystem();
        while (!waiting.empty()) MakeGroup(waiting);
        for (std::size_t i = Below(5); i > 0; --i) steps_.push_back(MakeStep(0));
    }

    std::string Format4() const {
        std::string models, steps;
        for (const System& system : systems_) models += System4(system);
        for (const Step& step : steps_) steps += Step4(step);
        return Document(4, Enclosed("Scene", " cameraRefID='0'", models), steps);
    }

    std::string Format5() const {
        std::string bricks, systems, steps;
        for (std::size_t i = 0; i < bricks_.size(); ++i) bricks += Brick5(i);
        for (const System& system : systems_) systems += System5(system);
        std::vector<bool> placed(parts_.size());
        for (const Step& step : steps_) steps += Step5(step, placed);
        return Document(5, Enclosed("Bricks", " cameraRef='0'", bricks) + Enclosed("RigidSystems", "", systems), steps);
    }

private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }
    bool OneIn(std::size_t chances) { return Below(chances) == 0; }
    float AnyNumber() { return static_cast<float>(Below(80)) / 4 - 10; }
    Vector3 AnyVector() { return {AnyNumber(), AnyNumber(), AnyNumber() + 0.125F}; }
    Placement AnyPlacement() { return {AnyVector(), AnyVector(), OneIn(2) ? 0 : Below(360)}; }

    void MakeBrick(Numbers& waiting) {
        const std::size_t partCount = OneIn(3) ? Below(3) + 1 : 0;  // of an assembly
        bricks_.push_back({partCount == 0 ? 0 : Below(900) + 1000, {}});
        for (std::size_t i = std::max<std::size_t>(partCount, 1); i > 0; --i) {
            Part part{bricks_.size() - 1, Below(900) + 1, OneIn(4), {Below(300) + 1}, {}, {}};
            while (OneIn(3)) part.materials.push_back(OneIn(3) ? 0 : Below(300) + 1);
            if (part.materials.back() == 0) part.materials.back() = 1;
            if (OneIn(4)) part.decoration = {0, Below(2) * 600, 601 + Below(9)};
            for (std::size_t left = part.isFlexible ? Below(4) + 1 : 1; left > 0; --left) {
                waiting.push_back(pieces_.size());
                pieces_.push_back({parts_.size(), part.pieces.size(), AnyPlacement(), {}});
                part.pieces.push_back(waiting.back());
            }
            parts_.push_back(part);
        }
    }

    void BeginSystem() {
        const bool isFirst = systems_.empty();
        systems_.push_back({isFirst ? 0 : systems_.back().firstGroup + systems_.back().groups.size(), {}, {}});
    }

    void MakeSystem(Numbers& waiting) {
        BeginSystem();
        for (std::size_t i = Below(4) + 1; i > 0; --i) MakeGroup(waiting);
        const std::size_t count = systems_.back().groups.size();
        while (count > 1 && OneIn(2)) {
            const float sign = OneIn(2) ? 1 : -1;
            const Vector3 axes[] = {{sign, 0, 0}, {0, sign, 0}, {0, 0, sign}};
            const std::size_t group = Below(count - 1);
            systems_.back().joints.push_back({{group, group + 1}, axes[Below(3)], AnyVector(), OneIn(2)});
        }
    }

    void MakeGroup(Numbers& waiting) {
        Group group{AnyPlacement(), {}};
        for (std::size_t i = Below(6) + 1; i > 0; --i) {
            if (systems_.size() < 3 && OneIn(2)) MakeBrick(waiting);
            if (waiting.empty()) continue;
            std::swap(waiting[Below(waiting.size())], waiting.back());
            group.pieces.push_back(waiting.back());
            waiting.pop_back();
            Stand(pieces_[group.pieces.back()], group.placement);
        }
        systems_.back().groups.push_back(group);
    }

    // The conversion makes bricks and parts when it meets the first of their pieces.
    void Stand(Piece& piece, const Placement& group) {
        piece.standing = piece.placement.Matrix() * group.Matrix();
        const std::size_t brick = parts_[piece.part].brick;
        Numbers& parts = bricks_[brick].parts;
        if (parts.empty()) brickOrder_.push_back(brick);
        if (std::find(parts.begin(), parts.end(), piece.part) == parts.end()) parts.push_back(piece.part);
    }

    Step MakeStep(std::size_t depth) {
        Step step{{}, OneIn(3), {}, {}};
        if (OneIn(3)) step.camera = Below(cameras_.size());
        while (!pieces_.empty() && !OneIn(4)) {
            step.pieces.push_back({Below(pieces_.size()), OneIn(3), AnyPlacement()});
        }
        while (depth < 4 && OneIn(2)) step.steps.push_back(MakeStep(depth + 1));
        return step;
    }

    std::string Document(std::size_t format, const std::string& scene, const std::string& steps) const {
        std::string cameras;
        for (std::size_t i = 0; i < cameras_.size(); ++i) {
            cameras += "<Camera name='C' distance='7.5' fieldOfView='40'" + Text("refID", i) + Text(cameras_[i]) + "/>";
        }
        return Enclosed(
            "WQFML", Text("versionMajor", format) + " versionMinor='0'",
            "<Meta><Author name='N' x='y'/><Description>some &lt;text&gt;</Description></Meta>" +
                Enclosed("Cameras", "", cameras) + scene +
                Enclosed("BuildingInstructions", "", Enclosed("BuildingInstruction", " name='B&#246;'", steps)));
    }

    std::string Piece4(std::size_t index) const {
        const Piece& piece = pieces_[index];
        const Part& part = parts_[piece.part];
        const std::size_t assembly = bricks_[part.brick].assembly;
        std::string attributes = Text("refID", index) + Text("designID", part.design) + Text(piece.placement) +
                                 Text("materialID", part.materials[0]) + Text("itemNos", part.brick);
        if (assembly != 0) attributes += Text("assemblyRefID", part.brick) + Text("assemblyID", assembly);
        if (part.isFlexible) {
            attributes += Text("flexRefID", piece.part) + Text("controlPoint", piece.point);
        }
        std::string surfaces;
        for (std::size_t i = 1; i < part.materials.size(); ++i) {
            surfaces += "<SubMaterial" + Text("surfaceID", i) + Text("materialID", part.materials[i]) + "/>";
        }
        for (std::size_t i = part.decoration.size(); i-- > 1;) {
            surfaces += "<Decoration" + Text("surfaceID", i) + Text("decorationID", part.decoration[i]) + "/>";
        }
        return Enclosed("Part", attributes, surfaces);
    }

    static std::string Joints(const System& system, const std::string& element, const char* reference,
                              bool areHingesSwapped) {
        std::string text;
        for (const Joint& joint : system.joints) {
            const Vector3 z{joint.a.y, joint.a.z, joint.a.x};
            const auto end = [&](std::size_t group, const std::string& vectors) {
                return "<" + element + Text(reference, system.firstGroup + group) + vectors + "/>";
            };
            const std::string type = joint.isHinge != areHingesSwapped ? "hinge" : "ball";
            text += Enclosed("Joint", " name='J' type='" + type + "'",
                             end(joint.groups[0], Text("a", joint.a) + Text("z", z) + Text("t", joint.t)) +
                                 end(joint.groups[1], Text("a", z)));
        }
        return text;
    }

    std::string System4(const System& system) const {
        std::string text;
        std::size_t refID = system.firstGroup;
        for (const Group& each : system.groups) {
            std::string pieces;
            for (const std::size_t piece : each.pieces) pieces += Piece4(piece);
            text += Enclosed("Group", Text("refID", refID++) + Text(each.placement), pieces);
        }
        // What format 4 calls a hinge has always come out as the other type.
        return Enclosed("Model", "", text + Joints(system, "GroupRef", "groupRef", true));
    }

    std::string Step4(const Step& step) const {
        std::string content;
        for (const Placed& placed : step.pieces) {
            content += "<PartRef" + Text("partRefID", placed.piece) + (placed.exploded ? " exploded='0'" : "") +
                       Text(placed.placement) + "/>";
        }
        for (const Step& nested : step.steps) content += Step4(nested);
        return Enclosed("Step", (step.camera ? Text("cameraRefID", *step.camera) : "") + Exploded(step, "'no'"),
                        content);
    }

    static std::string Exploded(const Step& step, const std::string& value) {
        return " name='S'" + (step.exploded ? " exploded=" + value + Text("a", Vector3{1, 2, 3}) : "");
    }

    std::string Brick5(std::size_t position) const {
        const std::size_t index = brickOrder_[position];
        const Brick& brick = bricks_[index];
        std::string content;
        for (const std::size_t number : brick.parts) {
            const Part& part = parts_[number];
            std::string bones;
            for (const std::size_t piece : part.pieces) {
                bones += "<Bone" + Text("refID", piece) + Text(pieces_[piece].standing) + "/>";
            }
            content += Enclosed("Part",
                                Text("refID", number) + Text("designID", part.design) +
                                    List("materials", part.materials) + List("decoration", part.decoration, 1),
                                bones);
        }
        const std::size_t design = brick.assembly != 0 ? brick.assembly : parts_[brick.parts[0]].design;
        return Enclosed("Brick", Text("refID", index) + Text("designID", design) + Text("itemNos", index), content);
    }

    std::string System5(const System& system) const {
        std::string text;
        std::size_t refID = system.firstGroup;
        for (const Group& each : system.groups) {
            text += "<Rigid" + Text("refID", refID++) + Text(each.placement) + List("boneRefs", each.pieces) + "/>";
        }
        return Enclosed("RigidSystem", "", text + Joints(system, "RigidRef", "rigidRef", false));
    }

    // Nested steps come before parts, and of a flexible element only the first reference counts.
    std::string Step5(const Step& step, std::vector<bool>& placed) const {
        std::string content;
        for (const Step& nested : step.steps) content += Step5(nested, placed);
        for (const Placed& each : step.pieces) {
            const std::size_t part = pieces_[each.piece].part;
            if (parts_[part].isFlexible && placed[part]) continue;
            placed[part] = true;
            content += "<PartRef" + Text("partRef", part) +
                       (each.exploded ? " exploded='1'" + Text(each.placement) : "") + "/>";
        }
        const std::string camera = step.camera ? "<Camera" + Text("cameraRef", *step.camera) + "/>" : "";
        return camera + Enclosed("Step", Exploded(step, "'true'"), content);
    }

    std::mt19937 random_;
    std::vector<Placement> cameras_;
    std::vector<Brick> bricks_;
    Numbers brickOrder_;
    std::vector<Part> parts_;
    std::vector<Piece> pieces_;
    std::vector<System> systems_;
    std::vector<Step> steps_;
};

template <class Loader>
Json SceneOf(const std::string& text) {
    const auto loader = New<Loader>();
    const auto scene = New<StorageScene2>();
    const AString content(text.data(), static_cast<std::uint32_t>(text.size()));
    EXPECT_TRUE(static_cast<ModelLoader&>(*loader).Load(content, scene.Get(), 0)) << text;
    return Json::parse(JsonOf([&](JsonWriter& json) { WriteScene(*scene, json); }));
}

// Where two values differ by more than what their floats were rounded by, or the empty text.
std::string Difference(const Json& a, const Json& b, const std::string& path = "") {
    if (a.is_number() && b.is_number()) {
        const double x = a.get<double>(), y = b.get<double>();
        return std::fabs(x - y) < 1e-4 * (1 + std::fabs(x)) ? "" : path + ": " + a.dump() + " or " + b.dump();
    }
    if (!a.is_structured() || a.type() != b.type()) return a == b ? "" : path + ": " + a.dump() + " or " + b.dump();
    if (a.size() != b.size()) return path + ": sizes";
    for (auto i = a.begin(), k = b.begin(); i != a.end(); ++i, ++k) {
        const std::string key = a.is_object() ? i.key() : std::to_string(i - a.begin());
        const std::string below = a.is_object() && key != k.key() ? "keys" : Difference(*i, *k, path + "/" + key);
        if (!below.empty()) return below;
    }
    return "";
}

}  // namespace

TEST(GeneratedModel, ComesToTheSameSceneInBothFormats) {
    std::size_t bones = 0;
    for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        const GeneratedModel model(seed);
        const Json scene = SceneOf<ModelLoaderWQFML4>(model.Format4());
        ASSERT_EQ(Difference(scene, SceneOf<ModelLoaderWQFML5>(model.Format5())), "") << "seed " << seed;
        for (const Json& brick : scene["bricks"]) {
            for (const Json& part : brick["parts"]) bones += part["bones"].size() - 1;
        }
    }
    EXPECT_GT(bones, 100u) << "there are flexible elements";
}

}  // namespace ZEMA::testing
