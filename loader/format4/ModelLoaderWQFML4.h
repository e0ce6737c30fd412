// Reads markup format 4.
#pragma once

#include <cstdint>

#include "loader/format4/ModelLoaderStorageScene.h"

namespace ZEMA {

// Reads a document while it is being parsed, without a tree of it.
//
// Errors: every problem of the content makes the load fail, at its end, so that one load finds what it can. Not looked
//         at is what stands in a part that is refused, below a root of another version, and behind the place where a
//         document is malformed. An incomplete flexible element fails without an error.
class ModelLoaderWQFML4 : public ModelLoaderStorageScene {
public:
    // Bits of `options`.
    static constexpr std::uint32_t kSkipJoints = 1;           // reads no "Joint" element
    static constexpr std::uint32_t kAllowUnknownCameras = 2;  // that instructions and steps name

    ModelLoaderWQFML4();

    // Text of 2^31 bytes or more is a ParserError, like any that the parser refuses.
    bool LoadScene(AString content, StorageScene* scene, std::uint32_t options) override;

protected:
    ~ModelLoaderWQFML4() override;
};

}  // namespace ZEMA
