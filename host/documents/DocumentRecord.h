// What came of importing a document, and such records in the forms that users and programs read.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/documents/DocumentFinder.h"
#include "host/plugin/PluginHost.h"
#include "host/print/Value.h"

namespace ZEMA {

// One document, with its attributes or with the reason why there are none.
struct DocumentRecord {
    std::string path;  // as given, any bytes
    bool imported = false;
    Value::Dictionary attributes = {};  // in the order of the attribute table
    std::string error = {};             // why it was not imported, in one line
    bool passing = false;   // for want of time, memory or an answer of the system: another try may import it
    bool away = false;      // known from an earlier reading, and not to be found for now
    bool repaired = false;  // read although only a repair makes the archive readable
};

// The known attributes in the order of their table, then whatever else a plug-in wrote.
Value::Dictionary AttributesOf(CFDictionaryRef attributes);

// Has the plug-in import a document. What its path is relative to is put in front before the plug-in sees it.
DocumentRecord ImportDocument(const PluginHost& host, const FoundDocument& document);

// The record as a user reads it in an object: {"path", "imported", "attributes", and "error" where it was not
// imported, "repaired" and "away" where that is so}. The path has U+FFFD where its bytes are not UTF-8; then
// "pathBytes" has them in base64, so that a program finds the file again.
Value::Dictionary ObjectOf(const DocumentRecord& record);

// The forms that the commands print, each command some of them.
enum class RecordFormat {
    Text,
    Json,
    Ndjson,
    PropertyList,
    Csv,
    Paths,
    PathsWithZeroBytes,
    Raw,  // each text and number of the attributes on a line
    RawWithZeroBytes,
};

// Puts records into words as they come: what stands before them all, each record, what stands behind them all. A result
// is to be written at once and whole, so that several programs may write into one pipe.
class RecordWriter {
public:
    virtual ~RecordWriter() = default;

    virtual std::string Head() = 0;
    virtual std::string Record(const DocumentRecord& record) = 0;  // may be empty
    virtual std::string Tail() = 0;
};

// Text has, of `several` documents, the path above each. Of the attributes only those with these names are written, or
// all where there are none.
std::unique_ptr<RecordWriter> NewRecordWriter(RecordFormat format, bool several,
                                              const std::vector<std::string>& names = {});

}  // namespace ZEMA
