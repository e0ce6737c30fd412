// Behaviours, which a model, bricks, parts, bones and groups carry alike.
#pragma once

#include "core/BasicArray.h"
#include "scene/StorageScene2.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

// Appends the children "Behavior" of `owner` to `behaviors`. Each gets an entry, which keeps what could be read; false
// when one has no name or an attribute without a key. Other children are passed over.
bool ReadBehaviors(const XMLDOMNodeAString& owner, BasicArray<StorageScene2::Behavior>& behaviors);

}  // namespace ZEMA
