// What came of importing one document.
#pragma once

#include <string>

#include "host/documents/DocumentFinder.h"
#include "host/plugin/PluginHost.h"
#include "host/print/Value.h"

namespace ZEMA {

struct DocumentRecord {
    std::string path;  // as given, any bytes
    bool imported = false;
    Value::Dictionary attributes;  // in the order of the attribute table
    std::string error;             // why it was not imported
};

// Has the plug-in import a document. What its path is relative to is put in front before the plug-in sees it.
DocumentRecord ImportDocument(const PluginHost& host, const FoundDocument& document);

// The record as a user reads it in an object: {"path", "imported", "attributes", and "error" where it was not
// imported}. The path is UTF-8, with U+FFFD where its bytes are not.
Value::Dictionary ObjectOf(const DocumentRecord& record);

}  // namespace ZEMA
