// Random models, each written in both formats of the markup, must come to the same scene.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <random>
#include <utility>

#include "host/print/JsonWriter.h"
#include "host/print/SceneJson.h"
#include "loader/format4/ModelLoaderWQFML4.h"
#include "loader/format5/ModelLoaderWQFML5.h"
#include "tests/loader/Texts.h"

namespace ZEMA::testing {
namespace {

using Json = nlohmann::json;
using Numbers = std::vector<std::size_t>;

// The same thing in both formats.
struct Both {
    std::string in4, in5;

    Both& operator+=(const Both& more) {
        in4 += more.in4;
        in5 += more.in5;
        return *this;
    }
};

struct Placement {
    std::string attributes;
    Matrix4 matrix;
};

// "Part" in format 4, "Bone" in format 5: what of a part stands in a group.
struct Piece {
    std::size_t part, point;
    Matrix4 standing;  // in the model
};

// Of one piece or, where it is flexible, of pieces at all control points.
struct Part {
    std::size_t brick, design;
    bool isFlexible;
    Numbers materials, decoration;  // by surface; 0 stands for none
    Numbers pieces;                 // by control point
    bool isPlaced = false;
};

struct Brick {
    std::size_t assembly;  // its design, or 0
    Numbers parts;         // that stand in the model, in the order in which they were met
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

std::string Element(const std::string& name, const std::string& attributes, const std::string& content = "") {
    return "<" + name + attributes + ">" + content + "</" + name + ">";
}

// A valid model of what both formats can say. Assemblies and flexible elements have pieces in any groups, in any order.
class GeneratedModel {
public:
    explicit GeneratedModel(std::uint32_t seed) : random_(seed) {
        std::string cameras;
        for (cameraCount_ = 0; cameraCount_ == 0 || !OneIn(3); ++cameraCount_) {
            cameras += Element("Camera", " name='C' distance='7.5' fieldOfView='40'" + Text("refID", cameraCount_) +
                                             AnyPlacement().attributes);
        }
        Both systems, instructions;
        while (bricks_.size() < 6) systems += MakeSystem(OneIn(2));
        systems += MakeSystem(true);
        for (std::size_t i = Below(5); i > 0; --i) instructions += MakeInstruction();
        const std::string bricks = Element("Bricks", " cameraRef='0'", Bricks5());
        text.in4 = Document(4, cameras, Element("Scene", " cameraRefID='0'", systems.in4), instructions.in4);
        text.in5 = Document(5, cameras, bricks + Element("RigidSystems", "", systems.in5), instructions.in5);
    }

    Both text;

private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }
    bool OneIn(std::size_t chances) { return Below(chances) == 0; }
    float AnyNumber() { return static_cast<float>(Below(80)) / 4 - 10; }
    Vector3 AnyVector() { return {AnyNumber(), AnyNumber(), AnyNumber() + 0.125F}; }

    Placement AnyPlacement() {
        const Vector3 axis = AnyVector(), move = AnyVector();
        const std::size_t degrees = OneIn(2) ? 0 : Below(360);
        return {Text("a", axis) + Text("t", move) + Text("angle", degrees),
                Matrix4::FromAxisAngle(axis, static_cast<float>(degrees) * kRadiansPerDegree, move)};
    }

    static std::string Document(std::size_t format, const std::string& cameras, const std::string& scene,
                                const std::string& instructions) {
        const std::string meta = "<Meta><Author name='N' x='y'/><Description>some &lt;text&gt;</Description></Meta>";
        return Element(
            "WQFML", Text("versionMajor", format) + " versionMinor='0'",
            meta + Element("Cameras", "", cameras) + scene + Element("BuildingInstructions", "", instructions));
    }

    // With the pieces of bricks that are begun here; the others wait for a later system, unless this is to be complete.
    Both MakeSystem(bool isComplete) {
        const std::size_t first = groupCount_;
        Both system;
        for (std::size_t i = Below(4) + 1; i > 0; --i) system += MakeGroup(true);
        while (isComplete && !waiting_.empty()) system += MakeGroup(false);
        while (groupCount_ - first > 1 && OneIn(2)) system += MakeJoint(first + Below(groupCount_ - first - 1));
        return {Element("Model", "", system.in4), Element("RigidSystem", "", system.in5)};
    }

    Both MakeGroup(bool beginsBricks) {
        const Placement placement = AnyPlacement();
        std::string parts;
        Numbers pieces;
        for (std::size_t i = Below(6) + 1; i > 0; --i) {
            if (beginsBricks && OneIn(2)) MakeBrick();
            if (waiting_.empty()) continue;
            std::swap(waiting_[Below(waiting_.size())], waiting_.back());
            pieces.push_back(waiting_.back());
            waiting_.pop_back();
            parts += Stand(pieces.back(), placement.matrix);
        }
        const std::string attributes = Text("refID", groupCount_++) + placement.attributes;
        return {Element("Group", attributes, parts), Element("Rigid", attributes + List("boneRefs", pieces))};
    }

    void MakeBrick() {
        const std::size_t partCount = OneIn(3) ? Below(3) + 1 : 0;  // of an assembly
        bricks_.push_back({partCount == 0 ? 0 : Below(900) + 1000, {}});
        for (std::size_t i = std::max<std::size_t>(partCount, 1); i > 0; --i) {
            Part part{bricks_.size() - 1, Below(900) + 1, OneIn(4), {Below(300) + 1}, {}, {}};
            while (OneIn(3)) part.materials.push_back(OneIn(3) ? 0 : Below(300) + 1);
            if (part.materials.back() == 0) part.materials.back() = 1;
            if (OneIn(4)) part.decoration = {0, Below(2) * 600, 601 + Below(9)};
            for (std::size_t left = part.isFlexible ? Below(4) + 1 : 1; left > 0; --left) {
                waiting_.push_back(pieces_.size());
                pieces_.push_back({parts_.size(), part.pieces.size(), {}});
                part.pieces.push_back(waiting_.back());
            }
            parts_.push_back(part);
        }
    }

    // The part of format 4. Bricks and parts are made, and told what they are, by the first of their pieces that is
    // met; what others say differs.
    std::string Stand(std::size_t index, const Matrix4& group) {
        static const Part kOther{0, 9, false, {9, 9, 9}, {9, 9, 9}, {}};
        Piece& piece = pieces_[index];
        const std::size_t brickIndex = parts_[piece.part].brick;
        Brick& brick = bricks_[brickIndex];
        const bool isFirstOfBrick = brick.parts.empty();
        const bool isFirstOfPart = std::find(brick.parts.begin(), brick.parts.end(), piece.part) == brick.parts.end();
        if (isFirstOfBrick) brickOrder_.push_back(brickIndex);
        if (isFirstOfPart) brick.parts.push_back(piece.part);
        const Part& part = isFirstOfPart ? parts_[piece.part] : kOther;
        const Placement placement = AnyPlacement();
        piece.standing = placement.matrix * group;
        std::string attributes = Text("refID", index) + Text("designID", part.design) + placement.attributes +
                                 Text("materialID", part.materials[0]) +
                                 Text("itemNos", isFirstOfBrick ? brickIndex : 9);
        if (brick.assembly != 0) {
            attributes += Text("assemblyRefID", brickIndex) + Text("assemblyID", isFirstOfBrick ? brick.assembly : 9);
        }
        if (parts_[piece.part].isFlexible) {
            attributes += Text("flexRefID", piece.part) + Text("controlPoint", piece.point);
        }
        std::string surfaces;
        for (std::size_t i = 1; i < part.materials.size(); ++i) {
            surfaces += Element("SubMaterial", Text("surfaceID", i) + Text("materialID", part.materials[i]));
        }
        for (std::size_t i = part.decoration.size(); i-- > 1;) {
            surfaces += Element("Decoration", Text("surfaceID", i) + Text("decorationID", part.decoration[i]));
        }
        return Element("Part", attributes, surfaces);
    }

    // Between this group and the next.
    Both MakeJoint(std::size_t group) {
        const float sign = OneIn(2) ? 1 : -1;
        const Vector3 axes[] = {{sign, 0, 0}, {0, sign, 0}, {0, 0, sign}};
        const std::size_t axis = Below(3);
        const std::string a = Text("a", axes[axis]) + Text("z", axes[(axis + 1) % 3]) + Text("t", AnyVector());
        const std::string b = Text("a", axes[(axis + 2) % 3]) + Text("z", axes[axis]) + Text("t", AnyVector());
        const auto joint = [&](const char* type, const char* end, const char* reference) {
            return Element("Joint", std::string(" name='J' type='") + type + "'",
                           Element(end, Text(reference, group) + a) + Element(end, Text(reference, group + 1) + b));
        };
        // A type keeps its number, and format 5 numbers hinge and ball the other way round.
        if (OneIn(2)) return {joint("hinge", "GroupRef", "groupRef"), joint("ball", "RigidRef", "rigidRef")};
        return {joint("ball", "GroupRef", "groupRef"), joint("hinge", "RigidRef", "rigidRef")};
    }

    std::string Bricks5() const {
        std::string text5;
        for (const std::size_t index : brickOrder_) {
            const Brick& brick = bricks_[index];
            std::string content;
            for (const std::size_t number : brick.parts) {
                const Part& part = parts_[number];
                std::string bones;
                for (const std::size_t piece : part.pieces) {
                    bones += Element("Bone", Text("refID", piece) + Text(pieces_[piece].standing));
                }
                content += Element("Part",
                                   Text("refID", number) + Text("designID", part.design) +
                                       List("materials", part.materials) + List("decoration", part.decoration, 1),
                                   bones);
            }
            const std::size_t design = brick.assembly != 0 ? brick.assembly : parts_[brick.parts[0]].design;
            text5 +=
                Element("Brick", Text("refID", index) + Text("designID", design) + Text("itemNos", index), content);
        }
        return text5;
    }

    // The camera of an instruction is no event.
    Both MakeInstruction() {
        Both steps;
        while (!OneIn(3)) steps += MakeStep(0);
        return {Element("BuildingInstruction", " cameraRefID='0' name='B&#246;'", steps.in4),
                Element("BuildingInstruction", " name='B&#246;'", steps.in5)};
    }

    // Nested steps come before parts.
    Both MakeStep(std::size_t depth) {
        Both nested, parts;
        while (depth < 4 && OneIn(2)) nested += MakeStep(depth + 1);
        while (!pieces_.empty() && !OneIn(4)) parts += MakePartRef();
        const std::string a = Text("a", AnyVector());
        const Both attributes = OneIn(3) ? Both{" exploded='no' name='S'" + a, " exploded='true' name='S'" + a}
                                         : Both{" name='S'", " name='S'"};
        const std::size_t camera = Below(2 * cameraCount_);
        const bool hasCamera = camera < cameraCount_;
        return {
            Element("Step", (hasCamera ? Text("cameraRefID", camera) : "") + attributes.in4, parts.in4 + nested.in4),
            (hasCamera ? Element("Camera", Text("cameraRef", camera)) : "") +
                Element("Step", attributes.in5, nested.in5 + parts.in5)};
    }

    // A flexible element is placed once, by any of its pieces.
    Both MakePartRef() {
        const std::size_t piece = Below(pieces_.size());
        Part& part = parts_[pieces_[piece].part];
        const bool isDropped = part.isFlexible && std::exchange(part.isPlaced, true);
        const bool isExploded = OneIn(3);
        const std::string placement = AnyPlacement().attributes;
        const std::string reference4 = Text("partRefID", piece) + (isExploded ? " exploded='0'" : "") + placement;
        const std::string reference5 =
            Text("partRef", pieces_[piece].part) + (isExploded ? " exploded='1'" + placement : "");
        return {Element("PartRef", reference4), isDropped ? "" : Element("PartRef", reference5)};
    }

    std::mt19937 random_;
    std::size_t cameraCount_ = 0;
    std::size_t groupCount_ = 0;
    std::vector<Brick> bricks_;
    Numbers brickOrder_;
    std::vector<Part> parts_;
    std::vector<Piece> pieces_;
    Numbers waiting_;  // pieces of bricks that are begun
};

template <class Loader>
Json SceneOf(const std::string& text) {
    const RefPointer<ModelLoader> loader = New<Loader>();
    const auto scene = New<StorageScene2>();
    EXPECT_TRUE(loader->Load(Bytes(text), scene.Get(), 0)) << text;
    return Json::parse(JsonOf([&](JsonWriter& json) { WriteScene(*scene, json); })).flatten();
}

// Whether two values differ by no more than what their floats were rounded by.
bool AreNear(const Json& a, const Json& b) {
    if (!a.is_number() || !b.is_number()) return a == b;
    return std::fabs(a.get<double>() - b.get<double>()) < 1e-4 * (1 + std::fabs(a.get<double>()));
}

TEST(GeneratedModel, ComesToTheSameSceneInBothFormats) {
    std::size_t flexibleBones = 0;
    for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        const GeneratedModel model(seed);
        const Json scene = SceneOf<ModelLoaderWQFML4>(model.text.in4);
        const Json expected = SceneOf<ModelLoaderWQFML5>(model.text.in5);
        ASSERT_EQ(scene.size(), expected.size());
        for (auto i = scene.begin(), k = expected.begin(); i != scene.end(); ++i, ++k) {
            ASSERT_EQ(i.key(), k.key());
            ASSERT_TRUE(AreNear(*i, *k)) << i.key() << ": " << *i << " or " << *k;
            if (i.key().ends_with("bones/1/transformation/0")) ++flexibleBones;
        }
    }
    EXPECT_GT(flexibleBones, 100U);
}

}  // namespace
}  // namespace ZEMA::testing
