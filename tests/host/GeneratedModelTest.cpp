// Random models, each written in both formats of the markup, must come to the same scene.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <random>

#include "host/JsonWriter.h"
#include "host/SceneJson.h"
#include "loader/ModelLoaderWQFML4.h"
#include "loader/ModelLoaderWQFML5.h"

namespace ZEMA::testing {

namespace {

using Json = nlohmann::ordered_json;
using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 4>;  // the rows of the rotation, then the translation

struct Placement {
    Vector axis, move;
    double degrees;
};

// Of one part or, where it is flexible, of its pieces at all control points.
struct Part {
    int brick, design;
    bool isFlexible;
    std::vector<int> materials, decoration;  // by surface; 0 stands for none
    std::vector<int> pieces;                 // by control point
};

struct Brick {
    int assembly;  // its design, or 0
    std::vector<int> parts;
};

// "Part" in format 4, "Bone" in format 5.
struct Piece {
    int part;
    std::size_t point;
    Placement placement;
    Matrix standing;  // in the model
};

struct Group {
    Placement placement;
    std::vector<int> pieces;
};

struct Joint {
    int groups[2];  // of the system
    Vector a, t;
    bool isHinge;
};

struct System {
    std::vector<Group> groups;
    std::vector<Joint> joints;
};

struct Placed {
    int piece;
    bool exploded;
    Placement placement;
};

struct Step {
    int camera;  // -1 is none
    bool exploded;
    std::vector<Placed> pieces;
    std::vector<Step> steps;
};

Vector Times(const Vector& v, const Matrix& m) {
    Vector result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k) result[i] += v[k] * m[k][i];
    }
    return result;
}

// Rodrigues' formula, applied to each row of the identity.
Matrix MatrixOf(const Placement& placement) {
    const Vector& axis = placement.axis;
    const double length = std::hypot(axis[0], axis[1], axis[2]);
    const double angle = placement.degrees * std::acos(-1.0) / 180;
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t i = 0; i < 3; ++i) {
            const double along = axis[row] * axis[i] / (length * length);
            const std::size_t other = 3 - row - i;  // neither of two different axes
            const double turned = row == i ? 0 : axis[other] / length * ((i + 3 - row) % 3 == 1 ? 1 : -1);
            result[row][i] = along * (1 - std::cos(angle)) + (row == i ? std::cos(angle) : turned * std::sin(angle));
        }
    }
    result[3] = placement.move;
    return result;
}

std::string Text(const Matrix& matrix) {
    std::string text;
    for (const Vector& row : matrix) {
        for (const double number : row) text += (text.empty() ? "" : ",") + std::to_string(number);
    }
    return " transformation='" + text + "'";
}

std::string Text(const char* name, const Vector& vector) {
    std::string text;
    for (std::size_t i = 0; i < 3; ++i) {
        text += " " + std::string(name) + "xyz"[i] + "='" + std::to_string(vector[i]) + "'";
    }
    return text;
}

std::string Text(const Placement& placement) {
    return Text("a", placement.axis) + Text("t", placement.move) + " angle='" + std::to_string(placement.degrees) + "'";
}

std::string Text(const char* name, int number) {
    return " " + std::string(name) + "='" + std::to_string(number) + "'";
}

template <class Numbers>
std::string List(const char* name, Numbers first, Numbers last) {
    std::string text;
    for (; first != last; ++first) text += (text.empty() ? "" : ",") + std::to_string(*first);
    return text.empty() ? "" : " " + std::string(name) + "='" + text + "'";
}

std::string Enclosed(const std::string& element, const std::string& attributes, const std::string& content) {
    return "<" + element + attributes + ">" + content + "</" + element + ">";
}

// A valid model of what both formats can say. Assemblies and flexible elements have pieces in any groups, in any order.
class GeneratedModel {
public:
    explicit GeneratedModel(std::uint32_t seed) : random_(seed) {
        for (int i = Below(4) + 1; i > 0; --i) cameras_.push_back(AnyPlacement());
        std::vector<int> waiting;  // pieces of bricks that are begun
        for (int i = Below(3) + 1; i > 0; --i) MakeSystem(waiting);
        systems_.emplace_back();
        while (!waiting.empty()) MakeGroup(waiting);
        for (int i = Below(5); i > 0; --i) steps_.push_back(MakeStep(0));
    }

    std::string Format4() const {
        std::string cameras, models, steps;
        for (std::size_t i = 0; i < cameras_.size(); ++i) cameras += Camera(i, Text(cameras_[i]));
        int group = 0;
        for (const System& system : systems_) models += Enclosed("Model", "", System4(system, group));
        for (const Step& step : steps_) steps += Step4(step);
        return Document(4, cameras, Enclosed("Scene", " cameraRefID='0'", models), steps);
    }

    std::string Format5() const {
        std::string cameras, bricks, systems, steps;
        for (std::size_t i = 0; i < cameras_.size(); ++i) cameras += Camera(i, Text(MatrixOf(cameras_[i])));
        for (std::size_t i = 0; i < bricks_.size(); ++i) bricks += Brick5(i);
        int group = 0;
        for (const System& system : systems_) systems += Enclosed("RigidSystem", "", System5(system, group));
        std::vector<bool> placed(parts_.size());
        for (const Step& step : steps_) steps += Step5(step, placed);
        return Document(5, cameras,
                        Enclosed("Bricks", " cameraRef='0'", bricks) + Enclosed("RigidSystems", "", systems), steps);
    }

private:
    int Below(int limit) { return static_cast<int>(random_() % static_cast<std::uint32_t>(limit)); }
    bool OneIn(int chances) { return Below(chances) == 0; }
    Vector AnyVector() { return {Below(80) / 4.0 - 10, Below(80) / 4.0 - 10, Below(80) / 4.0 + 0.25}; }
    Placement AnyPlacement() { return {AnyVector(), AnyVector(), OneIn(2) ? 0.0 : Below(360)}; }

    void MakeBrick(std::vector<int>& waiting) {
        const int partCount = OneIn(3) ? Below(3) + 1 : 0;  // of an assembly
        bricks_.push_back({partCount == 0 ? 0 : Below(900) + 1000, {}});
        for (int i = std::max(partCount, 1); i > 0; --i) {
            Part part{static_cast<int>(bricks_.size()) - 1, Below(900) + 1, OneIn(4), {Below(300) + 1}, {}, {}};
            while (OneIn(3)) part.materials.push_back(OneIn(3) ? 0 : Below(300) + 1);
            if (part.materials.back() == 0) part.materials.back() = 1;
            if (OneIn(4)) part.decoration = {0, Below(2) * 600, 601 + Below(9)};
            for (int point = part.isFlexible ? Below(4) : 0; point >= 0; --point) {
                waiting.push_back(static_cast<int>(pieces_.size()));
                pieces_.push_back({static_cast<int>(parts_.size()), part.pieces.size(), AnyPlacement(), {}});
                part.pieces.push_back(waiting.back());
            }
            parts_.push_back(part);
        }
    }

    void MakeSystem(std::vector<int>& waiting) {
        systems_.emplace_back();
        for (int i = Below(4) + 1; i > 0; --i) MakeGroup(waiting);
        const int count = static_cast<int>(systems_.back().groups.size());
        while (count > 1 && OneIn(2)) {
            Vector axis{};
            axis[static_cast<std::size_t>(Below(3))] = OneIn(2) ? 1 : -1;
            const int group = Below(count - 1);
            systems_.back().joints.push_back({{group, group + 1}, axis, AnyVector(), OneIn(2)});
        }
    }

    void MakeGroup(std::vector<int>& waiting) {
        Group group{AnyPlacement(), {}};
        for (int i = Below(6); i >= 0; --i) {
            if (systems_.size() < 3 && OneIn(2)) MakeBrick(waiting);
            if (waiting.empty()) continue;
            std::swap(waiting[static_cast<std::size_t>(Below(static_cast<int>(waiting.size())))], waiting.back());
            group.pieces.push_back(waiting.back());
            waiting.pop_back();
            Stand(pieces_[At(group.pieces.back())], group.placement);
        }
        systems_.back().groups.push_back(group);
    }

    // The conversion makes bricks and parts when it meets the first of their pieces.
    void Stand(Piece& piece, const Placement& group) {
        const Matrix own = MatrixOf(piece.placement), outer = MatrixOf(group);
        for (std::size_t row = 0; row < 4; ++row) piece.standing[row] = Times(own[row], outer);
        for (std::size_t i = 0; i < 3; ++i) piece.standing[3][i] += outer[3][i];
        const int brick = parts_[At(piece.part)].brick;
        std::vector<int>& parts = bricks_[At(brick)].parts;
        if (parts.empty()) brickOrder_.push_back(brick);
        if (std::find(parts.begin(), parts.end(), piece.part) == parts.end()) parts.push_back(piece.part);
    }

    Step MakeStep(int depth) {
        Step step{OneIn(3) ? Below(static_cast<int>(cameras_.size())) : -1, OneIn(3), {}, {}};
        while (!pieces_.empty() && !OneIn(4)) {
            step.pieces.push_back({Below(static_cast<int>(pieces_.size())), OneIn(3), AnyPlacement()});
        }
        while (depth < 4 && OneIn(2)) step.steps.push_back(MakeStep(depth + 1));
        return step;
    }

    static std::size_t At(int index) { return static_cast<std::size_t>(index); }

    static std::string Camera(std::size_t index, const std::string& placement) {
        return "<Camera name='C' distance='7.5' fieldOfView='40'" + Text("refID", static_cast<int>(index)) + placement +
               "/>";
    }

    static std::string Document(int format, const std::string& cameras, const std::string& scene,
                                const std::string& steps) {
        return Enclosed(
            "WQFML", Text("versionMajor", format) + " versionMinor='0'",
            "<Meta><Author name='N' x='y'/><Description>some &lt;text&gt;</Description></Meta>" +
                Enclosed("Cameras", "", cameras) + scene +
                Enclosed("BuildingInstructions", "", Enclosed("BuildingInstruction", " name='B&#246;'", steps)));
    }

    std::string Piece4(int index) const {
        const Piece& piece = pieces_[At(index)];
        const Part& part = parts_[At(piece.part)];
        const int assembly = bricks_[At(part.brick)].assembly;
        std::string attributes = Text("refID", index) + Text("designID", part.design) + Text(piece.placement) +
                                 Text("materialID", part.materials[0]) + Text("itemNos", part.brick);
        if (assembly != 0) attributes += Text("assemblyRefID", part.brick) + Text("assemblyID", assembly);
        if (part.isFlexible) {
            attributes += Text("flexRefID", piece.part) + Text("controlPoint", static_cast<int>(piece.point));
        }
        std::string surfaces;
        for (std::size_t i = 1; i < part.materials.size(); ++i) {
            surfaces +=
                "<SubMaterial" + Text("surfaceID", static_cast<int>(i)) + Text("materialID", part.materials[i]) + "/>";
        }
        for (std::size_t i = part.decoration.size(); i-- > 1;) {
            surfaces += "<Decoration" + Text("surfaceID", static_cast<int>(i)) +
                        Text("decorationID", part.decoration[i]) + "/>";
        }
        return Enclosed("Part", attributes, surfaces);
    }

    std::string System4(const System& system, int& group) const {
        std::string text;
        const int first = group;
        for (const Group& each : system.groups) {
            std::string pieces;
            for (const int piece : each.pieces) pieces += Piece4(piece);
            text += Enclosed("Group", Text("refID", group++) + Text(each.placement), pieces);
        }
        for (const Joint& joint : system.joints) {
            std::string ends;
            for (const int end : joint.groups) {
                ends += "<GroupRef" + Text("groupRef", first + end) + Text("a", joint.a) + Text("t", joint.t) + "/>";
            }
            // What format 4 calls a hinge has always come out as the other type.
            text += Enclosed("Joint", joint.isHinge ? " type='ball'" : " type='hinge'", ends);
        }
        return text;
    }

    std::string Step4(const Step& step) const {
        std::string content;
        for (const Placed& placed : step.pieces) {
            content += "<PartRef" + Text("partRefID", placed.piece) + (placed.exploded ? " exploded=''" : "") +
                       Text(placed.placement) + "/>";
        }
        for (const Step& nested : step.steps) content += Step4(nested);
        return Enclosed("Step", (step.camera < 0 ? "" : Text("cameraRefID", step.camera)) + Exploded(step, "''"),
                        content);
    }

    static std::string Exploded(const Step& step, const std::string& value) {
        return " name='S'" + (step.exploded ? " exploded=" + value + Text("a", Vector{1, 2, 3}) : "");
    }

    std::string Brick5(std::size_t position) const {
        const int index = brickOrder_[position];
        const Brick& brick = bricks_[At(index)];
        std::string content;
        for (const int number : brick.parts) {
            const Part& part = parts_[At(number)];
            std::string bones;
            for (const int piece : part.pieces) {
                bones += "<Bone" + Text("refID", piece) + Text(pieces_[At(piece)].standing) + "/>";
            }
            const auto& decoration = part.decoration;
            const auto decorated = decoration.empty() ? decoration.begin() : decoration.begin() + 1;
            content += Enclosed("Part",
                                Text("refID", number) + Text("designID", part.design) +
                                    List("materials", part.materials.begin(), part.materials.end()) +
                                    List("decoration", decorated, decoration.end()),
                                bones);
        }
        const int design = brick.assembly != 0 ? brick.assembly : parts_[At(brick.parts[0])].design;
        return Enclosed("Brick", Text("refID", index) + Text("designID", design) + Text("itemNos", index), content);
    }

    std::string System5(const System& system, int& group) const {
        std::string text;
        const int first = group;
        for (const Group& each : system.groups) {
            text += "<Rigid" + Text("refID", group++) + Text(MatrixOf(each.placement)) +
                    List("boneRefs", each.pieces.begin(), each.pieces.end()) + "/>";
        }
        for (const Joint& joint : system.joints) {
            std::string ends;
            for (const int end : joint.groups) {
                ends += "<RigidRef" + Text("rigidRef", first + end) + Text("a", joint.a) + Text("t", joint.t) + "/>";
            }
            text += Enclosed("Joint", joint.isHinge ? " type='hinge'" : " type='ball'", ends);
        }
        return text;
    }

    // Nested steps come before parts, and of a flexible element only the first reference counts.
    std::string Step5(const Step& step, std::vector<bool>& placed) const {
        std::string content;
        for (const Step& nested : step.steps) content += Step5(nested, placed);
        for (const Placed& each : step.pieces) {
            const int part = pieces_[At(each.piece)].part;
            if (parts_[At(part)].isFlexible && placed[At(part)]) continue;
            placed[At(part)] = true;
            content += "<PartRef" + Text("partRef", part) +
                       (each.exploded ? " exploded='1'" + Text(MatrixOf(each.placement)) : "") + "/>";
        }
        const std::string camera = step.camera < 0 ? "" : "<Camera" + Text("cameraRef", step.camera) + "/>";
        return camera + Enclosed("Step", Exploded(step, "'true'"), content);
    }

    std::mt19937 random_;
    std::vector<Placement> cameras_;
    std::vector<Brick> bricks_;
    std::vector<int> brickOrder_;
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
