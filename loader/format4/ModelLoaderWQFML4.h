// Reads markup format 4.
#pragma once

#include <cstdint>

#include "loader/format4/ModelLoaderStorageScene.h"

namespace ZEMA {

// Reads a document while it is being parsed, without a tree of it. Every problem of the content makes the load fail,
// but the document is read to its end, so that all of them are found.
class ModelLoaderWQFML4 : public ModelLoaderStorageScene {
public:
    static constexpr std::uint32_t kSkipJoints = 1;  // reads no "Joint" element
    static constexpr std::uint32_t kAllowUnknownCameras =
        2;  // instructions and steps may name cameras that are not there

    ModelLoaderWQFML4();

    // Text of 2^31 bytes or more is a ParserError, like any that the parser refuses.
    bool LoadScene(AString content, StorageScene* scene, std::uint32_t options) override;

protected:
    ~ModelLoaderWQFML4() override;
};

}  // namespace ZEMA
