// What was found in a document, in the forms that users and programs read.
#pragma once

#include <string>

#include "host/documents/DocumentCheck.h"
#include "host/print/JsonWriter.h"

namespace ZEMA {

// Each takes the path as the user gave it, any bytes.

// One object: {"path", "loaded", "version", "attempts": [{"format", "loaded", "errorMask", "errors"}, ...]}. An attempt
// that a limit or the memory ended has a "reason" too, and so has the document where no loader was asked.
void WriteCheck(const std::string& path, const DocumentCheck& check, JsonWriter& json);

// A line, and below it, indented, a line for everything that is wrong. Of a document that loaded these are the errors
// of the loader that read it; that another gave up on its version is no news.
std::string CheckText(const std::string& path, const DocumentCheck& check);

}  // namespace ZEMA
