// Puts right where documents place the bones of some designs.
#pragma once

#include "loader/DesignTemplates.h"
#include "loader/Version.h"
#include "scene/StorageScene2.h"

namespace ZEMA {

// Corrects a part whose design and bones are known. Documents of later brick sets than the catalogue's corrections
// cover, and documents that name none (a first component of 0), are right as they are. `templates` may be null; a part
// of one bone whose design has a template of several pieces gets a bone for each.
void CorrectPart(StorageScene2::Part& part, const Version& brickSetVersion, DesignTemplates* templates);

}  // namespace ZEMA
