// Entries of folders in words.
#pragma once

#include <string>

#include "host/archive/StorageTree.h"
#include "host/print/JsonWriter.h"

namespace ZEMA {

// "drwehx" with "-" for what does not hold: a folder ("l" for a link), may be read, may be written, entries may be made
// or removed in it, hidden, executable.
std::string FlagsText(const StorageFacts& facts);

// In columns: flags, size in bytes, and the time of the last change in the local time zone or "-".
std::string ColumnsText(const StorageFacts& facts);

// {"path", "name", "type", "size", "flags", "modified"}; the time is in UTC, and null where it is not known.
void WriteEntry(JsonWriter& json, const std::string& path, const StorageEntry& entry);

}  // namespace ZEMA
