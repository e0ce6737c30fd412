// The placements that format-5 elements carry in their attributes.
#pragma once

#include "scene/Matrix4.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

// From "transformation", the twelve floats of the four rows; or else from the axis "a", the "angle" in degrees and the
// translation "t". The rotation rows of the result have length 1, or there is no rotation.
Matrix4 ReadTransformation(const XMLDOMNodeAString& node);

}  // namespace ZEMA
