// What all loaders of model markup have in common: where a text comes from, and how what is wrong with it is told.
#pragma once

#include <cstdint>

#include "core/AString.h"
#include "core/BasicArray.h"
#include "core/Object.h"
#include "core/RefPointer.h"
#include "core/String.h"
#include "scene/StorageScene2.h"
#include "storage/Path.h"

namespace ZEMA {

// Reads one markup text into a format-5 scene.
//
// Errors:  problems of the content never throw. Each is an object in `errors`, in the order in which they were found,
//          and a bit of `errorMask`; they stay readable until the next load. Memory that runs out is std::bad_alloc,
//          except inside the XML parser, where it looks like a malformed text: a ParserError.
// Threads: a loader, its errors and the scene belong to one thread at a time.
class ModelLoader : public Object {
public:
    class Error;

    // Reads the text, and leaves in `scene` what could be read of it, also when it answers false. `options` are bits
    // that each loader defines for itself. The text comes by value so that a caller who moves it in lets the loader
    // free it as soon as it is parsed.
    virtual bool Load(AString content, StorageScene2* scene, std::uint32_t options) = 0;

    // Reads the text of the file at `path`, which is closed again before the text is looked at. A file that cannot be
    // read, or that holds 2^31 bytes or more, is a PathError; an empty one is a ContentError. Both leave the scene
    // alone.
    bool Load(const Path& path, StorageScene2* scene, std::uint32_t options);

    // The one way in which an error is recorded.
    void Raise(const RefPointer<Error>& error);

    BasicArray<RefPointer<Error>> errors;
    std::uint32_t errorMask = 0;  // the kinds of all `errors`

protected:
    ModelLoader() = default;
    ~ModelLoader() override;

    void ClearErrors();
};

// One thing that is wrong. Not changed once it is in a loader's list.
class ModelLoader::Error : public Object {
public:
    // Each kind is a bit of `errorMask`.
    enum Kind : std::uint32_t {
        NoError = 0,
        PathKind = 1,
        VersionKind = 2,
        JointKind = 4,
        CameraKind = 8,
        BrickKind = 16,
        PartKind = 32,
        BoneKind = 64,
        RigidKind = 128,
        BIKind = 256,
        ParserKind = 512,
        ContentKind = 1024,
        MiscKind = 2048,
    };

    explicit Error(std::uint32_t errorKind = NoError) : kind(errorKind) {}

    // Appends what is known of the error, in words, to `out`.
    virtual void Describe(String& out) const;

    std::uint32_t kind;
    String description;  // free text; empty unless a loader fills it

protected:
    ~Error() override;
};

}  // namespace ZEMA
