// What the file system knows about an item.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/Foundation/NSDate.h"
#include "platform/Foundation/NSObjCRuntime.h"

struct stat;

namespace Foundation {

enum class NSFileType {
    NSFileTypeRegular,
    NSFileTypeDirectory,
    NSFileTypeSymbolicLink,
    NSFileTypeSocket,
    NSFileTypeCharacterSpecial,
    NSFileTypeBlockSpecial,
    NSFileTypeUnknown,
};
using enum NSFileType;

// The dictionary of attributes, with the keys in use as fields. Read ones are all present; to set some, fill in those.
struct NSFileAttributes {
    std::optional<NSFileType> fileType;
    std::optional<std::uint32_t> filePosixPermissions;  // the low bits of the mode, 07777
    std::optional<NSDate> fileCreationDate;             // of the last change of status where none is kept
    std::optional<NSDate> fileModificationDate;
    std::optional<std::uint64_t> fileSize;  // bytes
};

// The attributes that a stat structure holds.
FOUNDATION_EXPORT NSFileAttributes FileAttributesOf(const struct stat& status);

}  // namespace Foundation
