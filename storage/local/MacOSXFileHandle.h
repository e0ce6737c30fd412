// Opening a local file in one of the storage tree's styles.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>

#include "platform/Foundation/NSFileHandle.h"
#include "storage/ElementAttributes.h"

namespace ZEMA {

// A handle at the start of the file, or null. A share bit counts as the access that it grants to others, so that the
// handle can do what any sharer may. A handle that can write is refused for a file whose mode lets nobody write or
// execute it, even to a user whom the mode does not bind.
std::unique_ptr<Foundation::NSFileHandle> FileHandleAtPath(CFStringRef path, AccessStyle style);

}  // namespace ZEMA
