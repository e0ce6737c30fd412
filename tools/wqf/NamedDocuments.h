// The documents that a command line names.
#pragma once

#include <optional>
#include <vector>

#include "host/documents/DocumentFinder.h"
#include "tools/wqf/Commands.h"

namespace ZEMA {

// All documents in order, with a message for each folder that has none. Null, with a message, when the list of paths
// cannot be read.
std::optional<std::vector<FoundDocument>> FindNamedDocuments(const DocumentPaths& named);

}  // namespace ZEMA
