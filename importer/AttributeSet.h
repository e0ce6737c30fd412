// What a loaded model tells the indexing service.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <array>

#include "loader/Version.h"
#include "scene/StorageScene2.h"

namespace ZEMA {

// The names of the attributes in the order in which they are written: kMDItemVersion, kMDItemCreator,
// kMDItemDescription, kMDItemAuthors, kMDItemKeywords, and the two of the importer's own, which count and list bricks.
const std::array<CFStringRef, 7>& AttributeNames();

// Writes the attributes of a scene that was read from markup `version`. What the document does not tell is left out;
// the version and the two brick attributes are always there. A name that is in `attributes` already keeps its value,
// except that the brick attributes replace theirs.
//
// Errors: memory that runs out is std::bad_alloc; a part may have been written then.
void WriteAttributes(const StorageScene2& scene, const Version& version, CFMutableDictionaryRef attributes);

// Enters what WriteAttributes wrote into one dictionary in another one, by the same rule. An empty dictionary receives
// all of it or, when memory runs out, nothing: the platform takes the room for that many entries at once.
void HandOverAttributes(CFDictionaryRef written, CFMutableDictionaryRef attributes);

}  // namespace ZEMA
