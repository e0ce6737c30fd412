// A model as JSON, for programs that want to get at it.
#pragma once

#include "host/print/JsonWriter.h"
#include "scene/StorageScene2.h"

namespace ZEMA {

// Writes the scene as one object under its own field names, as it goes: beside the scene only the positions of its
// objects are held. Groups and steps may nest as deep as they like.
//
// A matrix is 16 numbers, a vector 3. A reference is the position of what it names: a camera its index, a rigid
// [system, rigid], a part [brick, part], a bone [brick, part, bone]; null where it names nothing, and "detached" where
// the object has left the tree.
void WriteScene(const StorageScene2& scene, JsonWriter& json);

}  // namespace ZEMA
