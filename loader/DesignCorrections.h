// Puts right where documents place the bones of some designs.
#pragma once

#include <cstdint>

#include "core/BasicArray.h"
#include "core/Object.h"
#include "core/RefPointer.h"
#include "loader/Version.h"
#include "scene/Matrix4.h"
#include "scene/StorageScene2.h"

namespace ZEMA {

// The pieces of one design.
class DesignTemplate : public Object {
public:
    // One piece.
    struct Record {
        Matrix4 transformation;  // of the piece within the part
    };

    BasicArray<Record> records;
};

// Looks templates up. Whoever has such a source derives from this and hands it to a loader.
class DesignTemplates : public Object {
public:
    // Null when the design has no template.
    virtual RefPointer<DesignTemplate> Find(std::uint32_t designID) = 0;
};

// Corrects a part whose design and bones are known. Documents of later brick sets than the catalogue's corrections
// cover, and documents that name none (a first component of 0), are right as they are. `templates` may be null; a part
// of one bone whose design has a template of several pieces gets a bone for each.
void CorrectPart(StorageScene2::Part& part, const Version& brickSetVersion, DesignTemplates* templates);

}  // namespace ZEMA
