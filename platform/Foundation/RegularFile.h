// Opening a regular file, and nothing that is something else.
#pragma once

#include <string>

#include "platform/Foundation/NSObjCRuntime.h"

namespace Foundation {

// Opens what `path` leads to, links followed, for one of O_RDONLY, O_WRONLY and O_RDWR; the caller closes it. -1 with
// errno when that fails, EINVAL for whatever is no regular file: that is neither opened nor waited for. While somebody
// holds a lease on the file this waits until it is given back, as other programs do. Where the system allows it,
// reading leaves the time of last access alone.
FOUNDATION_EXPORT int OpenRegularFile(const std::string& path, int mode);

}  // namespace Foundation
