// What desktop indexers are told of a document.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/documents/DocumentRecord.h"

namespace ZEMA {

// How a handler comes by a document. It may be called for anything that lies at a path, and for nothing.
using ReadDocument = std::function<DocumentRecord(const std::string& path)>;

// The attributes of a document that was imported, by what they mean. Empty where the document does not tell.
struct DocumentTexts {
    std::string title;  // the first line of the first description, or else the name of the file without its ending
    std::string version;
    std::string creator;
    std::vector<std::string> authors;
    std::vector<std::string> keywords;
    std::vector<std::string> descriptions;  // one of each language, in the order of the languages' codes
    std::vector<std::string> designs;
    std::int64_t brickCount = 0;
};

DocumentTexts TextsOf(const DocumentRecord& record);

}  // namespace ZEMA
