// The errors that loaders raise, a class for each kind of thing that can be wrong.
#pragma once

#include <cstdint>

#include "loader/ModelLoader.h"
#include "loader/Version.h"
#include "scene/StorageScene.h"
#include "scene/StorageScene2.h"

namespace ZEMA {

// The values of a `detail` are listed in each class as its Detail; any other value is described as "unknown".

// A file that cannot be opened or read.
class PathError : public ModelLoader::Error {
public:
    explicit PathError(const Path& unreadable) : Error(PathKind), path(unreadable) {}
    void Describe(String& out) const override;

    Path path;  // what could not be read
};

// A document of a version that the loader does not read.
class VersionError : public ModelLoader::Error {
public:
    VersionError(const Version& accepted, const Version& found)
        : Error(VersionKind), expected(accepted), actual(found) {}
    void Describe(String& out) const override;

    Version expected;
    Version actual;
};

// A joint of no known type, or of something that there is not. No detail tells which.
class JointError : public ModelLoader::Error {
public:
    explicit JointError(const StorageScene::Joint* offending = nullptr) : Error(JointKind), joint(offending) {}

    // The format-4 record, null in format 5. Nothing keeps it alive: compare it, never follow it.
    const StorageScene::Joint* joint;
};

// A camera that is left out, or one that the bricks name and that there is not.
class CameraError : public ModelLoader::Error {
public:
    // What is wrong: the numbers of `detail`.
    enum Detail : std::uint32_t { NonExistingCamera, MissingRefID, ReusedRefID };

    explicit CameraError(std::uint32_t what) : Error(CameraKind), detail(what) {}
    void Describe(String& out) const override;

    std::uint32_t detail;
};

// A brick that is left out.
class BrickError : public ModelLoader::Error {
public:
    // What is wrong: the numbers of `detail`.
    enum Detail : std::uint32_t { MissingRefID, ReusedRefID, MissingDesignID };

    explicit BrickError(std::uint32_t what) : Error(BrickKind), detail(what) {}
    void Describe(String& out) const override;

    std::uint32_t detail;
};

// A part that is left out, or one with something wrong in it.
class PartError : public ModelLoader::Error {
public:
    // What is wrong: the numbers of `detail`.
    enum Detail : std::uint32_t {
        MissingRefID,
        ReusedRefID,
        MissingDesignID,
        MissingMaterial,
        WrongMaterial,
        WrongDecoration,
        NotOneMaterial,
        Assembly,
        Flex,
        Misc,
    };

    PartError(const RefPointer<StorageScene2::Part>& offending, std::uint32_t what)
        : Error(PartKind), part(offending), detail(what) {}
    void Describe(String& out) const override;

    RefPointer<StorageScene2::Part> part;  // may be null
    std::uint32_t detail;
};

// A bone that is left out.
class BoneError : public ModelLoader::Error {
public:
    // What is wrong: the numbers of `detail`.
    enum Detail : std::uint32_t { MissingRefID, ReusedRefID };

    explicit BoneError(std::uint32_t what) : Error(BoneKind), detail(what) {}
    void Describe(String& out) const override;

    std::uint32_t detail;
};

// A rigid that is left out.
class RigidError : public ModelLoader::Error {
public:
    // What is wrong: the numbers of `detail`.
    enum Detail : std::uint32_t { MissingRefID, ReusedRefID };

    explicit RigidError(std::uint32_t what) : Error(RigidKind), detail(what) {}
    void Describe(String& out) const override;

    std::uint32_t detail;
};

// A building instruction that names something that there is not.
class BIError : public ModelLoader::Error {
public:
    // What is wrong: the numbers of `detail`.
    enum Detail : std::uint32_t { NonExistingCamera, NonExistingPart };

    explicit BIError(std::uint32_t what) : Error(BIKind), detail(what) {}
    void Describe(String& out) const override;

    std::uint32_t detail;
};

// Malformed markup. Where and why, nobody knows.
class ParserError : public ModelLoader::Error {
public:
    ParserError() : Error(ParserKind) {}
};

// A text that is no document of the format at all.
class ContentError : public ModelLoader::Error {
public:
    // What is wrong: the numbers of `detail`.
    enum Detail : std::uint32_t { Empty, MissingWQFMLTag };

    explicit ContentError(std::uint32_t what) : Error(ContentKind), detail(what) {}
    void Describe(String& out) const override;

    std::uint32_t detail;
};

}  // namespace ZEMA
