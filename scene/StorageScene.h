// A model in memory, as markup format 4 describes it. Lives between the format-4 loader and the conversion.
#pragma once

#include <cstdint>

#include "core/BasicArray.h"
#include "core/Object.h"
#include "core/RefPointer.h"
#include "core/String.h"
#include "scene/Matrix4.h"
#include "scene/StorageScene2.h"

namespace ZEMA {

// Models made of rigid groups of parts. Parts may share an assembly (one brick of several parts) or a flexible element
// (one control point a part); joints connect groups; building instructions are nested steps that place parts.
//
// Every array is in document order. Assemblies and flexible elements are owned by their parts and point back to them
// with plain pointers, which are good while the scene lives.
//
// Ownership: everything is released with the scene, in reverse order of the fields. Steps nest as deep as a document
// says and are released without recursion.
// Threads:   one at a time.
class StorageScene : public Object {
public:
    struct Model;
    struct Joint;
    struct Decoration;
    struct BI;  // one building instruction
    struct BIPart;
    struct Selection;
    class Rigid;
    class Part;
    class Assembly;
    class Flex;
    class BIStep;

    StorageScene();

    // Empties everything but `meta` and `camera`, which a fresh scene has empty.
    void Clear();

    String name;  // the format-4 loader leaves it empty
    BasicArray<RefPointer<StorageScene2::Camera>> cameras;
    BasicArray<Model> models;
    BasicArray<BI> buildingInstructions;
    BasicArray<StorageScene2::Meta> meta;
    BasicArray<Selection> selections;  // the format-4 loader never fills it
    RefPointer<StorageScene2::Camera> camera;

protected:
    ~StorageScene() override;
};

// A rigid group of parts.
class StorageScene::Rigid : public Object {
public:
    String name;
    Matrix4 transformation;
    BasicArray<RefPointer<Part>> parts;

protected:
    ~Rigid() override;
};

// Connects two groups; the first end and the second.
struct StorageScene::Joint {
    String name;
    RefPointer<Rigid> rigid1;
    RefPointer<Rigid> rigid2;
    Vector3 a1{0, 1, 0};
    Vector3 z1{0, 0, 1};
    Vector3 t1;
    Vector3 a2{0, 1, 0};
    Vector3 z2{0, 0, 1};
    Vector3 t2;
    std::uint32_t type = 1;  // 1 for "hinge" and for no type at all, 0 for any other
};

// Groups and how they are joined.
struct StorageScene::Model {
    String name;
    BasicArray<RefPointer<Rigid>> rigids;
    BasicArray<Joint> joints;
};

// What is printed on one surface of a part.
struct StorageScene::Decoration {
    std::uint32_t surfaceID = 0;
    std::uint32_t decorationID = 0;
};

// A piece: a brick of its own, or a piece of the assembly or flexible element that it names.
class StorageScene::Part : public Object {
public:
    String name;
    std::uint32_t designID = 0;
    String itemNos;  // as written, not split
    BasicArray<Decoration> decorations;
    BasicArray<unsigned long> materials;  // the part's own, then one a surface; 0 where none is set
    Matrix4 transformation;               // in its group
    RefPointer<Assembly> assembly;        // may be null
    RefPointer<Flex> flex;                // which it is a control point of; may be null

protected:
    ~Part() override;
};

// Several parts that form one brick.
class StorageScene::Assembly : public Object {
public:
    std::uint32_t assemblyID = 0;  // the design of the brick, from its first part
    BasicArray<Part*> parts;       // in the order in which they were read; owned by their groups

protected:
    ~Assembly() override = default;
};

// A flexible element, whose parts are its control points.
class StorageScene::Flex : public Object {
public:
    std::uint32_t designID = 0;  // of the first part read for it
    BasicArray<Part*> parts;     // by control point; null until a part claims it; owned by their groups

protected:
    ~Flex() override = default;
};

// A part that a step puts in its place.
struct StorageScene::BIPart {
    RefPointer<Part> part;
    bool exploded = false;
    Matrix4 transformation;  // set only when exploded
};

// A step, with steps inside it.
class StorageScene::BIStep : public Object {
public:
    String name;
    BasicArray<BIPart> parts;
    RefPointer<StorageScene2::Camera> camera;  // may be null
    BasicArray<RefPointer<BIStep>> steps;
    bool exploded = false;
    Vector3 a;

protected:
    ~BIStep() override;
};

// One building instruction.
struct StorageScene::BI {
    String name;
    RefPointer<StorageScene2::Camera> camera;  // may be null
    BasicArray<RefPointer<BIStep>> steps;      // the outermost ones
};

// Parts that a builder selected under a name.
struct StorageScene::Selection {
    String name;
    BasicArray<RefPointer<Part>> parts;
};

}  // namespace ZEMA
