// The path helpers of strings.
#pragma once

#include <optional>
#include <string>

#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSObjCRuntime.h"

namespace Foundation {

// Only "/" separates. All but stringByStandardizingPath work on the text alone and never look at the disk.

// A leading "/" is a component of its own, and so is one at the end of a longer text; empty components vanish.
FOUNDATION_EXPORT CFPointer<CFArrayRef> pathComponents(CFStringRef path);

// One "/" between the parts, none at the end, repeated ones reduced; an empty part adds nothing.
FOUNDATION_EXPORT CFPointer<CFStringRef> stringByAppendingPathComponent(CFStringRef path, CFStringRef component);

// The components, which are strings, with "/" between them; a first component "/" makes the path absolute, and empty
// ones add nothing.
FOUNDATION_EXPORT CFPointer<CFStringRef> pathWithComponents(CFArrayRef components);

// Expands "~" and "~user", drops what changes nothing ("//", "/./", a "/" or "/." at the end), and resolves ".." in an
// absolute path: through the links on the disk when the whole path exists, else in the text. Without ".." no link is
// followed. A relative path keeps its "..", and a "." in front.
FOUNDATION_EXPORT CFPointer<CFStringRef> stringByStandardizingPath(CFStringRef path);

// A leading "~" counts as absolute.
FOUNDATION_EXPORT bool isAbsolutePath(CFStringRef path);

// The bytes that name the path to the system: UTF-8. None for a text that cannot be a path: null, empty, with a zero
// unit or half a surrogate pair.
FOUNDATION_EXPORT std::optional<std::string> FileSystemRepresentation(CFStringRef path);

// The platform string for bytes from the file system, every byte kept; null when they are not UTF-8.
FOUNDATION_EXPORT CFPointer<CFStringRef> StringWithFileSystemRepresentation(const std::string& bytes);

}  // namespace Foundation
