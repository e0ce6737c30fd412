// What the importer finds in a document, with the reasons that it keeps to itself, and that in words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/print/JsonWriter.h"
#include "host/system/Failure.h"
#include "importer/DocumentLoad.h"

namespace ZEMA {

// What came of loading a document.
struct DocumentCheck {
    bool loaded = false;
    std::string version;                // of the markup, "5" or "4"; empty when nothing loaded
    std::vector<LoadAttempt> attempts;  // of the loaders that were asked, in turn; none where that was in vain
    Failure failure;                    // why it did not load, in one sentence for people
};

// Loads a document as the importer does, but in this program, and opens it for reading only. `path` may lead into an
// archive. `scene`, unless null, receives the model if one loads; otherwise it is thrown away. Exceptions end as
// failures.
//
// Threads: takes a StorageSession.
DocumentCheck CheckDocument(const std::string& path, std::uint32_t options = kImportOptions,
                            RefPointer<StorageScene2>* scene = nullptr);

// Whether the loader that read the document found nothing wrong with it.
bool LoadedWithoutError(const DocumentCheck& check);

// All that there is to say of a failure: the sentence, and then what the loader says to whose format the document
// claims to belong.
std::vector<std::string> ReasonsOf(const DocumentCheck& check);

// Why the importer did not import the document, in one line: the sentence, and behind it the first of the loader's
// errors.
Failure WhyNotImported(const std::string& path);

// One object: {"path", "loaded", "version", "attempts": [{"format", "loaded", "errorMask", "errors"}, ...]}. Of a
// document that did not load, "reason" is the sentence; an attempt that a limit or the memory ended has one too. A path
// that is not UTF-8 is there a second time, in base64, as "pathBytes".
void WriteCheck(const std::string& path, const DocumentCheck& check, JsonWriter& json);

// A line, and below it, indented, a line for everything that is wrong: the sentence, and then the errors of the loader
// to whose format the document claims to belong before those of the other. Of a document that loaded only the errors of
// the loader that read it are there; that another gave up on its version is no news.
std::string CheckText(const std::string& path, const DocumentCheck& check);

}  // namespace ZEMA
