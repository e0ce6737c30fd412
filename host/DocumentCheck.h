// What the importer finds in a document, with the reasons that it keeps to itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "importer/DocumentLoad.h"

namespace ZEMA {

struct DocumentCheck {
    bool loaded = false;
    std::string version;  // of the markup, "5" or "4"; empty when nothing loaded
    std::vector<LoadAttempt> attempts;
    std::string reason;  // when the document failed outside of any attempt: why
};

// Loads the document at an absolute path in UTF-8 as the importer does, in this program, and throws the model away.
// Exceptions end as reasons.
//
// Threads: takes a StorageSession.
DocumentCheck CheckDocument(const std::string& path, std::uint32_t options = kImportOptions);

// Why the importer did not import the document, in one line.
std::string FailureReasonOf(const std::string& path);

}  // namespace ZEMA
