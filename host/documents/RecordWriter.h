// Records of imported documents in the forms that users and programs read.
#pragma once

#include <memory>
#include <string>

#include "host/documents/DocumentRecord.h"

namespace ZEMA {

enum class RecordFormat { Text, Json, Ndjson, PropertyList };

// Puts records into words as they come: what stands before them all, each record, what stands behind them all. A result
// is to be written at once and whole, so that several programs may write into one pipe.
class RecordWriter {
public:
    virtual ~RecordWriter() = default;

    virtual std::string Head() = 0;
    virtual std::string Record(const DocumentRecord& record) = 0;  // may be empty
    virtual std::string Tail() = 0;
};

// Text has, of `several` documents, the path above each.
std::unique_ptr<RecordWriter> NewRecordWriter(RecordFormat format, bool several);

}  // namespace ZEMA
