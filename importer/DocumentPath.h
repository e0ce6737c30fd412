// From the paths of the file system to those of the storage tree.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "core/String.h"

namespace ZEMA {

// The storage path of a document: /a/b.wqf becomes file/a/b.wqf.
//
// The path is standardised first; a relative one starts at the current directory. When it names a symbolic link, the
// link's destination takes its place, once; a relative destination starts at the link's folder. The empty path gives
// the empty text, which names nothing in the tree.
String StoragePathOf(CFStringRef nativePath);

}  // namespace ZEMA
