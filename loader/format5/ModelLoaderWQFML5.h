// The loader of markup format 5.
#pragma once

#include "core/BasicMap.h"
#include "core/MemoryBlocks.h"
#include "loader/DesignCorrections.h"
#include "loader/ModelLoader.h"
#include "loader/Version.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

// Parses the text into a tree and walks it section by section. What is wrong with one element never keeps its siblings
// from being read; but a text that cannot be parsed, a root that is not of version 5.0 and a bricks section that is
// missing or failed end a load early. An element that is left out takes everything below it along.
//
// A load empties the scene first, except for its behaviours, and keeps the brick set's version of the load before
// unless the document gives one.
//
// The reference maps are filled while the sections are read: a reference sees what stands before it in this order. They
// hold plain pointers into the scene and are emptied when the next text is loaded; until then they are good for as long
// as the scene keeps its objects.
class ModelLoaderWQFML5 : public ModelLoader {
public:
    template <class T>
    using ReferenceMap = BasicMap<unsigned long, T*, Less<unsigned long>>;

    explicit ModelLoaderWQFML5(const RefPointer<DesignTemplates>& source = nullptr);  // may be null

    using ModelLoader::Load;
    // True when every section was read without a failure. Failures and errors are not the same: numbers in a part's
    // lists that cannot be read, and a camera for the bricks that there is not, are errors that the load goes on from;
    // an incomplete behaviour, a list that names a part or a bone that there is not, and a document without bricks fail
    // without an error. No option bit has a meaning here.
    bool Load(AString content, StorageScene2* scene, std::uint32_t options) override;

    // From the metadata entry "BrickSet"; zeros until a document gives one.
    const Version& BrickSetVersion() const { return brickSetVersion; }

    const ReferenceMap<StorageScene2::Camera>& Cameras() const { return cameraMap; }
    const ReferenceMap<StorageScene2::Brick>& Bricks() const { return brickMap; }
    const ReferenceMap<StorageScene2::Part>& Parts() const { return partMap; }
    const ReferenceMap<StorageScene2::Bone>& Bones() const { return boneMap; }
    const ReferenceMap<StorageScene2::Rigid>& Rigids() const { return rigidMap; }

protected:
    ~ModelLoaderWQFML5() override;

private:
    using Node = XMLDOMNodeAString;
    using Groups = BasicArray<RefPointer<StorageScene2::Group>>;
    using Events = BasicArray<RefPointer<StorageScene2::BIEvent>>;

    // Raises the error; false, as the answer of a reader.
    bool Fail(const RefPointer<Error>& error);

    // ModelLoaderWQFML5.cpp: the document as a whole, its metadata and cameras.
    void Reset(StorageScene2& scene);
    bool ReadDocument(const Node& root, StorageScene2& scene);
    void ReadMeta(const Node& root, StorageScene2& scene);
    bool ReadCameras(const Node& root, StorageScene2& scene);
    bool ReadCamera(const Node& node, StorageScene2& scene);

    // ModelLoaderWQFML5Bricks.cpp
    bool ReadBricks(const Node& root, StorageScene2& scene);
    bool ReadBrick(const Node& node, StorageScene2& scene);
    bool ReadPart(const Node& node, StorageScene2::Brick& brick);
    bool ReadPartLists(const Node& node, StorageScene2::Part& part);
    RefPointer<StorageScene2::Brick> NewBrick(std::uint32_t design);
    bool ReadBone(const Node& node, StorageScene2::Part& part);
    void SplitBrick(std::uint32_t refID, StorageScene2& scene);
    void DropPart(const RefPointer<StorageScene2::Part>& part);

    // ModelLoaderWQFML5Systems.cpp
    bool ReadGroupSystems(const Node& root, StorageScene2& scene);
    bool ReadGroup(const Node& node, Groups& groups);
    bool OpenGroup(const Node& node, Groups& groups);
    bool ReadRigidSystems(const Node& root, StorageScene2& scene);
    bool ReadRigidSystem(const Node& node, StorageScene2::RigidSystem& system);
    bool ReadRigid(const Node& node, StorageScene2::RigidSystem& system);
    bool ReadJoint(const Node& node, StorageScene2::Joint& joint) const;
    bool ReadInstructions(const Node& root, StorageScene2& scene);
    bool ReadEvents(const Node& node, Events& events);
    bool ReadCameraEvent(const Node& node, Events& events);
    bool ReadPartEvent(const Node& node, Events& events);

    Version brickSetVersion;
    RefPointer<DesignTemplates> designTemplates;
    ReferenceMap<StorageScene2::Camera> cameraMap{blocks_};
    ReferenceMap<StorageScene2::Brick> brickMap{blocks_};
    ReferenceMap<StorageScene2::Part> partMap{blocks_};
    ReferenceMap<StorageScene2::Bone> boneMap{blocks_};
    ReferenceMap<StorageScene2::Rigid> rigidMap{blocks_};

    // What splits take out of the scene. Kept until the next load, because `partMap` and `boneMap` still name it and
    // later references may find it there.
    BasicArray<RefPointer<StorageScene2::Part>> droppedParts_;

    // Of the objects that a document has many of, with their lists and the maps' nodes.
    MemoryBlocks blocks_;
};

}  // namespace ZEMA
