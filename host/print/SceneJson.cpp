#include "host/print/SceneJson.h"

#include <array>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

using Scene = StorageScene2;

// Where the objects of a scene stand in its tree, found by hashing, so that a scene of many references is looked
// through once. A position is the object's index in its
// array, after those of what owns it: a bone's is that of brick, part and bone. What the scene refers to and no longer
// owns has none.
//
// Ownership: keeps nothing alive; the scene must stay as it is.
class ScenePositions {
public:
    template <std::size_t depth>
    using Position = std::array<std::size_t, depth>;

    explicit ScenePositions(const Scene& scene);

    // Null when the object has no position.
    const Position<1>* Find(const Scene::Camera& camera) const { return FindIn(cameras_, camera); }
    const Position<2>* Find(const Scene::Rigid& rigid) const { return FindIn(rigids_, rigid); }
    const Position<2>* Find(const Scene::Part& part) const { return FindIn(parts_, part); }
    const Position<3>* Find(const Scene::Bone& bone) const { return FindIn(bones_, bone); }

private:
    template <class Object, std::size_t depth>
    using Table = std::unordered_map<const Object*, Position<depth>>;

    template <class Object, std::size_t depth>
    static const Position<depth>* FindIn(const Table<Object, depth>& table, const Object& object) {
        const auto found = table.find(&object);
        return found == table.end() ? nullptr : &found->second;
    }

    void EnterRigids(const Scene& scene);
    void EnterParts(const Scene& scene);

    Table<Scene::Camera, 1> cameras_;
    Table<Scene::Rigid, 2> rigids_;
    Table<Scene::Part, 2> parts_;
    Table<Scene::Bone, 3> bones_;
};

ScenePositions::ScenePositions(const Scene& scene) {
    for (std::size_t i = 0; i < scene.cameras.Size(); ++i) cameras_.try_emplace(scene.cameras[i].Get(), Position<1>{i});
    EnterParts(scene);
    EnterRigids(scene);
}

void ScenePositions::EnterParts(const Scene& scene) {
    for (std::size_t i = 0; i < scene.bricks.Size(); ++i) {
        const auto& parts = scene.bricks[i]->parts;
        for (std::size_t j = 0; j < parts.Size(); ++j) {
            const auto& bones = parts[j]->bones;
            parts_.try_emplace(parts[j].Get(), Position<2>{i, j});
            for (std::size_t k = 0; k < bones.Size(); ++k) bones_.try_emplace(bones[k].Get(), Position<3>{i, j, k});
        }
    }
}

void ScenePositions::EnterRigids(const Scene& scene) {
    for (std::size_t i = 0; i < scene.rigidSystems.Size(); ++i) {
        const auto& rigids = scene.rigidSystems[i].rigids;
        for (std::size_t j = 0; j < rigids.Size(); ++j) rigids_.try_emplace(rigids[j].Get(), Position<2>{i, j});
    }
}

template <class Range, class Write>
void WriteArray(JsonWriter& json, const Range& range, Write write) {
    json.BeginArray();
    for (const auto& element : range) write(element);
    json.EndArray();
}

// Writes the kinds of objects of a scene, each as an object of its own or as where it stands.
class SceneWriter {
public:
    SceneWriter(const Scene& scene, JsonWriter& json) : scene_(scene), json_(json), positions_(scene) {}

    void Write();

private:
    using Groups = BasicArray<RefPointer<Scene::Group>>;
    using Events = BasicArray<RefPointer<Scene::BIEvent>>;

    template <class Range, class WriteElement>
    void List(std::string_view key, const Range& range, WriteElement write) {
        json_.Key(key);
        WriteArray(json_, range, write);
    }
    template <class Object>
    void Reference(const RefPointer<Object>& object);
    template <class Object>
    void Reference(std::string_view key, const RefPointer<Object>& object) {
        json_.Key(key);
        Reference(object);
    }
    void Position(const ScenePositions::Position<1>& position) { json_.Number(position[0]); }
    template <std::size_t depth>
    void Position(const ScenePositions::Position<depth>& position) {
        WriteArray(json_, position, [&](std::size_t index) { json_.Number(index); });
    }

    void Text(std::string_view key, const String& text) {
        json_.Text(key, text.IsEmpty() ? std::string() : Utf8Of(text.CFString()));
    }
    void Matrix(std::string_view key, const Matrix4& matrix);
    void Vector(std::string_view key, const Vector3& vector);
    void Numbers(std::string_view key, const BasicArray<unsigned long>& numbers);
    template <class Attribute>
    void Attributes(const BasicArray<Attribute>& attributes);
    void Behaviors(const BasicArray<Scene::Behavior>& behaviors);

    void Meta(const Scene::Meta& entry);
    void Camera(const Scene::Camera& camera);
    void Brick(const Scene::Brick& brick);
    void Part(const Scene::Part& part);
    void Bone(const Scene::Bone* bone);
    void RigidSystem(const Scene::RigidSystem& system);
    void Rigid(const Scene::Rigid& rigid);
    void Joint(const Scene::Joint& joint);
    void GroupSystem(const Scene::GroupSystem& system);
    void GroupTree(const Groups& groups);
    void BeginGroup(const Scene::Group& group);
    void Instruction(const Scene::BI& instruction);
    void EventTree(const Events& events);
    void BeginEvent(const Scene::BIEvent& event);

    const Scene& scene_;
    JsonWriter& json_;
    const ScenePositions positions_;
};

// A list whose elements are being written, each with what is below it.
template <class List>
struct OpenList {
    const List* list;
    std::size_t next;
};

void SceneWriter::Write() {
    json_.BeginObject();
    Text("name", scene_.name);
    List("cameras", scene_.cameras, [&](const auto& camera) { Camera(*camera); });
    List("bricks", scene_.bricks, [&](const auto& brick) { Brick(*brick); });
    List("rigidSystems", scene_.rigidSystems, [&](const auto& system) { RigidSystem(system); });
    List("groupSystems", scene_.groupSystems, [&](const auto& system) { GroupSystem(system); });
    List("buildingInstructions", scene_.buildingInstructions, [&](const auto& each) { Instruction(each); });
    List("meta", scene_.meta, [&](const auto& entry) { Meta(entry); });
    Reference("bricksCamera", scene_.bricksCamera);
    Behaviors(scene_.behaviors);
    json_.EndObject();
}

template <class Object>
void SceneWriter::Reference(const RefPointer<Object>& object) {
    if (!object) return json_.Null();
    const auto* const position = positions_.Find(*object);
    if (position == nullptr) return json_.Text(std::string_view("detached"));
    Position(*position);
}

void SceneWriter::Matrix(std::string_view key, const Matrix4& matrix) {
    List(key, matrix.m, [&](float element) { json_.Float(element); });
}

void SceneWriter::Vector(std::string_view key, const Vector3& vector) {
    List(key, std::array{vector.x, vector.y, vector.z}, [&](float component) { json_.Float(component); });
}

void SceneWriter::Numbers(std::string_view key, const BasicArray<unsigned long>& numbers) {
    List(key, numbers, [&](unsigned long number) { json_.Number(number); });
}

template <class Attribute>
void SceneWriter::Attributes(const BasicArray<Attribute>& attributes) {
    List("attributes", attributes, [&](const Attribute& attribute) {
        json_.BeginObject();
        Text("key", attribute.key);
        Text("value", attribute.value);
        json_.EndObject();
    });
}

void SceneWriter::Behaviors(const BasicArray<Scene::Behavior>& behaviors) {
    List("behaviors", behaviors, [&](const Scene::Behavior& behavior) {
        json_.BeginObject();
        Text("name", behavior.name);
        Attributes(behavior.attributes);
        json_.EndObject();
    });
}

void SceneWriter::Meta(const Scene::Meta& entry) {
    json_.BeginObject();
    Text("name", entry.name);
    Text("value", entry.value);
    Attributes(entry.attributes);
    json_.EndObject();
}

void SceneWriter::Camera(const Scene::Camera& camera) {
    json_.BeginObject();
    Text("name", camera.name);
    json_.Float("distance", camera.distance);
    Matrix("transformation", camera.transformation);
    json_.Float("fieldOfView", camera.fieldOfView);
    json_.Bool("orthographic", camera.orthographic);
    json_.EndObject();
}

void SceneWriter::Brick(const Scene::Brick& brick) {
    json_.BeginObject();
    json_.Number("designID", brick.designID);
    Text("itemNos", brick.itemNos);
    List("parts", brick.parts, [&](const auto& part) { Part(*part); });
    Behaviors(brick.behaviors);
    json_.EndObject();
}

void SceneWriter::Part(const Scene::Part& part) {
    json_.BeginObject();
    json_.Number("designID", part.designID);
    Numbers("materials", part.materials);
    Numbers("decoration", part.decoration);
    List("bones", part.bones, [&](const auto& bone) { Bone(bone.Get()); });
    Behaviors(part.behaviors);
    json_.EndObject();
}

void SceneWriter::Bone(const Scene::Bone* bone) {
    if (bone == nullptr) return json_.Null();
    json_.BeginObject();
    Matrix("transformation", bone->transformation);
    Behaviors(bone->behaviors);
    json_.EndObject();
}

void SceneWriter::RigidSystem(const Scene::RigidSystem& system) {
    json_.BeginObject();
    List("rigids", system.rigids, [&](const auto& rigid) { Rigid(*rigid); });
    List("joints", system.joints, [&](const auto& joint) { Joint(joint); });
    json_.EndObject();
}

void SceneWriter::Rigid(const Scene::Rigid& rigid) {
    json_.BeginObject();
    Matrix("transformation", rigid.transformation);
    List("bones", rigid.bones, [&](const auto& bone) { Reference(bone); });
    json_.EndObject();
}

void SceneWriter::Joint(const Scene::Joint& joint) {
    json_.BeginObject();
    Text("name", joint.name);
    Reference("rigid1", joint.rigid1);
    Reference("rigid2", joint.rigid2);
    Vector("a1", joint.a1);
    Vector("z1", joint.z1);
    Vector("t1", joint.t1);
    Vector("a2", joint.a2);
    Vector("z2", joint.z2);
    Vector("t2", joint.t2);
    json_.Number("type", joint.type);
    json_.EndObject();
}

void SceneWriter::GroupSystem(const Scene::GroupSystem& system) {
    json_.BeginObject();
    json_.Key("groups");
    GroupTree(system.groups);
    json_.EndObject();
}

// The lists that are open stand here and not on the call stack. The groups in a group are the last that is written of
// it, so behind the end of such a list stands the end of the group.
void SceneWriter::GroupTree(const Groups& groups) {
    json_.BeginArray();
    std::vector<OpenList<Groups>> open{{&groups, 0}};
    for (;;) {
        OpenList<Groups>& top = open.back();
        if (top.next < top.list->Size()) {
            const Scene::Group& group = *(*top.list)[top.next++];
            BeginGroup(group);
            open.push_back({&group.groups, 0});
            continue;
        }
        json_.EndArray();
        open.pop_back();
        if (open.empty()) return;
        json_.EndObject();
    }
}

void SceneWriter::BeginGroup(const Scene::Group& group) {
    json_.BeginObject();
    Text("name", group.name);
    Matrix("transformation", group.transformation);
    Vector("pivot", group.pivot);
    List("parts", group.parts, [&](const auto& part) { Reference(part); });
    Behaviors(group.behaviors);
    json_.Key("groups");
    json_.BeginArray();
}

void SceneWriter::Instruction(const Scene::BI& instruction) {
    json_.BeginObject();
    Text("name", instruction.name);
    json_.Key("events");
    EventTree(instruction.events);
    json_.EndObject();
}

// As GroupTree.
void SceneWriter::EventTree(const Events& events) {
    json_.BeginArray();
    std::vector<OpenList<Events>> open{{&events, 0}};
    for (;;) {
        OpenList<Events>& top = open.back();
        if (top.next < top.list->Size()) {
            const Scene::BIEvent& event = *(*top.list)[top.next++];
            BeginEvent(event);
            if (event.type == Scene::BIEvent::kStep) {
                open.push_back({&static_cast<const Scene::BIStep&>(event).events, 0});
            } else {
                json_.EndObject();
            }
            continue;
        }
        json_.EndArray();
        open.pop_back();
        if (open.empty()) return;
        json_.EndObject();
    }
}

void SceneWriter::BeginEvent(const Scene::BIEvent& event) {
    json_.BeginObject();
    json_.Number("type", event.type);
    if (event.type == Scene::BIEvent::kStep) {
        const auto& step = static_cast<const Scene::BIStep&>(event);
        Text("name", step.name);
        json_.Bool("exploded", step.exploded);
        Vector("a", step.a);
        json_.Key("events");
        json_.BeginArray();
    } else if (event.type == Scene::BIEvent::kCamera) {
        Reference("camera", static_cast<const Scene::BICamera&>(event).camera);
    } else {
        const auto& placed = static_cast<const Scene::BIPart&>(event);
        Reference("part", placed.part);
        json_.Bool("exploded", placed.exploded);
        Matrix("transformation", placed.transformation);
    }
}

}  // namespace

void WriteScene(const StorageScene2& scene, JsonWriter& json) {
    SceneWriter(scene, json).Write();
}

}  // namespace ZEMA
