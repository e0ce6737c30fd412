// The optional source of design templates, which say how a design that documents give as one bone is divided.
#pragma once

#include <cstdint>

#include "core/BasicArray.h"
#include "core/Object.h"
#include "core/RefPointer.h"
#include "scene/Matrix4.h"

namespace ZEMA {

// The pieces of one design.
class DesignTemplate : public Object {
public:
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

}  // namespace ZEMA
