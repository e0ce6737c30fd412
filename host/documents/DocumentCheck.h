// What the importer finds in a document, with the reasons that it keeps to itself, and that in words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/print/JsonWriter.h"
#include "host/system/Failure.h"
#include "importer/DocumentLoad.h"

namespace ZEMA {

// What came of loading a document: each loader that was asked, in turn, or what kept them all from being asked.
struct DocumentCheck {
    bool loaded = false;
    std::string version;  // of the markup, "5" or "4"; empty when nothing loaded
    std::vector<LoadAttempt> attempts;
    Failure failure;  // outside of any attempt
};

// Loads a document as the importer does, but in this program. `path` may lead into an archive. `scene`, unless null,
// receives the model if one loads; otherwise it is thrown away. Exceptions end as reasons.
//
// Threads: takes a StorageSession.
DocumentCheck CheckDocument(const std::string& path, std::uint32_t options = kImportOptions,
                            RefPointer<StorageScene2>* scene = nullptr);

// Whether the loader that read the document found nothing wrong with it.
bool LoadedWithoutError(const DocumentCheck& check);

// In words, all that the last load that was tried has to say of its failure, at least one line.
std::vector<std::string> ReasonsOf(const DocumentCheck& check);

// Why the importer did not import the document, in one line.
std::string FailureReasonOf(const std::string& path);

// One object: {"path", "loaded", "version", "attempts": [{"format", "loaded", "errorMask", "errors"}, ...]}. An attempt
// that a limit or the memory ended has a "reason" too, and so has the document where no loader was asked. The path may
// be any bytes, here and below.
void WriteCheck(const std::string& path, const DocumentCheck& check, JsonWriter& json);

// A line, and below it, indented, a line for everything that is wrong. Of a document that loaded these are the errors
// of the loader that read it; that another gave up on its version is no news.
std::string CheckText(const std::string& path, const DocumentCheck& check);

}  // namespace ZEMA
