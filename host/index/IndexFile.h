// The file of the index: where it is, whether it is one of ours, and how it is made.
#pragma once

#include <memory>
#include <string>

#include "host/index/Database.h"
#include "host/system/Failure.h"

namespace ZEMA {

// Where the user's index is kept: wqf/index.db in $XDG_DATA_HOME, or in ~/.local/share.
Result<std::string> DefaultIndexPath();

// Opens an index for a run, makes one where nothing is, and brings older tables to the newest. Nobody but the user may
// read a new file and the folders that are made for it.
//
// Fails with WrongKind for a file that is no index, before SQLite sees it: it is never written to. Damaged is one that
// SetIndexAside makes room for.
Result<std::unique_ptr<Database>> OpenIndexForWriting(const std::string& path);

// Opens an index that is there for searching, which waits for nobody who writes. Its tables must be the newest.
Result<std::unique_ptr<Database>> OpenIndexForReading(const std::string& path);

// Gives an index, damaged or not, and what belongs to it another name, and returns that; the empty text where nothing
// is. Fails for a file that is no index.
Result<std::string> SetIndexAside(const std::string& path);

}  // namespace ZEMA
