// A model in memory, as markup format 5 describes it. The one form that the importer reads.
#pragma once

#include <cstdint>

#include "core/BasicArray.h"
#include "core/Object.h"
#include "core/RefPointer.h"
#include "core/String.h"
#include "scene/Matrix4.h"

namespace ZEMA {

// Holds a model and does nothing with it: reading, checking and resolving of references is the loaders' work.
//
// Every array is in document order. Counted references across the tree (a rigid to its bones, a group to its parts, a
// step to its camera) name objects that the tree owns too; back pointers (a part to its brick, a bone to its part) are
// plain, so no cycle keeps anything alive.
//
// Ownership: everything is released with the scene, in reverse order of the fields. Groups and steps nest as deep as a
// document says and are released without recursion.
// Threads:   one at a time.
class StorageScene2 : public Object {
public:
    struct Meta;  // one metadata entry
    struct Behavior;
    struct Attribute;  // of a behaviour
    struct Joint;
    struct RigidSystem;
    struct GroupSystem;
    struct BI;  // one building instruction
    class Camera;
    class Brick;
    class Part;
    class Bone;
    class Rigid;
    class Group;
    class BIEvent;
    class BIStep;
    class BICamera;
    class BIPart;

    StorageScene2();

    String name;  // empty when the document gives none
    BasicArray<RefPointer<Camera>> cameras;
    BasicArray<RefPointer<Brick>> bricks;
    BasicArray<RigidSystem> rigidSystems;
    BasicArray<GroupSystem> groupSystems;
    BasicArray<BI> buildingInstructions;
    BasicArray<Meta> meta;
    RefPointer<Camera> bricksCamera;  // named by the bricks section; may be null
    BasicArray<Behavior> behaviors;   // of the model as a whole

protected:
    ~StorageScene2() override;
};

// An entry about the document, such as its application or an author.
struct StorageScene2::Meta {
    // One of the entry's attributes, as written.
    struct Attribute {
        String key;
        String value;
    };

    BasicArray<Attribute> attributes;  // every attribute of the entry
    String name;                       // the element's name, such as "Application" or "BrickSet"
    String value;                      // its character data
};

// A property of a behaviour.
struct StorageScene2::Attribute {
    String key;  // never empty once loaded
    String value;
};

// A name with properties; what it means is left to the programs that know the name.
struct StorageScene2::Behavior {
    String name;
    BasicArray<Attribute> attributes;
};

// A point of view that the document has saved.
class StorageScene2::Camera : public Object {
public:
    String name;
    float distance = 0;
    Matrix4 transformation;
    float fieldOfView = 80;  // degrees
    bool orthographic = false;

protected:
    ~Camera() override = default;
};

// A brick of the model. It may have no part: none is written, or none could be kept. Its design is never 0 when it was
// read from format 5; format 4 may leave it at 0.
class StorageScene2::Brick : public Object {
public:
    std::uint32_t designID = 0;
    String itemNos;  // as written, not split
    BasicArray<RefPointer<Part>> parts;
    BasicArray<Behavior> behaviors;

protected:
    ~Brick() override;
};

// A piece of a brick. Once loaded it has at least one material; of its design holds what holds of a brick's.
class StorageScene2::Part : public Object {
public:
    explicit Part(std::uint32_t design = 0) : designID(design) {}

    std::uint32_t designID;
    BasicArray<unsigned long> materials;   // one a surface
    BasicArray<unsigned long> decoration;  // one a surface, 0 for none; only format 4 decorates surface 0
    Brick* brick = nullptr;                // which owns this part
    BasicArray<RefPointer<Bone>> bones;
    BasicArray<Behavior> behaviors;

protected:
    ~Part() override;
};

// A place of a part in the model, which a rigid can hold: one for most parts, several where a part bends.
class StorageScene2::Bone : public Object {
public:
    Matrix4 transformation;  // in model space
    Part* part = nullptr;    // which owns this bone
    BasicArray<Behavior> behaviors;

protected:
    ~Bone() override;
};

// Bones that move together.
class StorageScene2::Rigid : public Object {
public:
    Matrix4 transformation;
    BasicArray<RefPointer<Bone>> bones;  // null where the document names a bone that does not exist

protected:
    ~Rigid() override;
};

// Connects two rigids; each end has its own three vectors.
struct StorageScene2::Joint {
    String name;
    RefPointer<Rigid> rigid1;
    RefPointer<Rigid> rigid2;
    Vector3 a1{0, 1, 0};
    Vector3 z1{0, 0, 1};
    Vector3 t1;
    Vector3 a2{0, 1, 0};
    Vector3 z2{0, 0, 1};
    Vector3 t2;
    std::uint32_t type = 1;  // 0 is a hinge, 1 a ball
};

// Rigids and how they are joined.
struct StorageScene2::RigidSystem {
    BasicArray<RefPointer<Rigid>> rigids;
    BasicArray<Joint> joints;
};

// Parts that a builder put together under a name, with groups inside it.
class StorageScene2::Group : public Object {
public:
    String name;
    Matrix4 transformation;
    Vector3 pivot;
    BasicArray<RefPointer<Part>> parts;  // null where the document names a part that does not exist
    BasicArray<Behavior> behaviors;
    BasicArray<RefPointer<Group>> groups;

protected:
    ~Group() override;
};

// One way to divide the model into groups.
struct StorageScene2::GroupSystem {
    BasicArray<RefPointer<Group>> groups;  // the outermost ones
};

// One building instruction.
struct StorageScene2::BI {
    String name;
    BasicArray<RefPointer<BIEvent>> events;  // the outermost steps and camera changes
};

// What a building instruction is made of; `type` tells the subclass.
class StorageScene2::BIEvent : public Object {
public:
    static constexpr std::uint32_t kStep = 0;
    static constexpr std::uint32_t kCamera = 1;
    static constexpr std::uint32_t kPart = 2;

    const std::uint32_t type;

protected:
    explicit BIEvent(std::uint32_t subclass) : type(subclass) {}
    ~BIEvent() override = default;
};

// A step, with steps inside it.
class StorageScene2::BIStep : public BIEvent {
public:
    BIStep() : BIEvent(kStep) {}

    String name;
    BasicArray<RefPointer<BIEvent>> events;
    bool exploded = false;
    Vector3 a;  // format 5 gives one only when exploded

protected:
    ~BIStep() override;
};

// A change of the point of view.
class StorageScene2::BICamera : public BIEvent {
public:
    BICamera() : BIEvent(kCamera) {}

    RefPointer<Camera> camera;  // to switch to; may be null

protected:
    ~BICamera() override = default;
};

// A part that a step puts in its place.
class StorageScene2::BIPart : public BIEvent {
public:
    // `placed` is null where the document names a part that does not exist.
    explicit BIPart(const RefPointer<Part>& placed) : BIEvent(kPart), part(placed) {}

    RefPointer<Part> part;
    bool exploded = false;
    Matrix4 transformation;  // set only when exploded

protected:
    ~BIPart() override;
};

}  // namespace ZEMA
