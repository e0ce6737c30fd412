// Bringing the index up to date with what lies on the disks.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "host/index/Database.h"
#include "host/system/Failure.h"
#include "host/workers/DocumentWorkers.h"

namespace ZEMA {

// What a run is over, and who is told of it.
struct IndexRunOptions {
    std::vector<std::string> folders;  // none: all that earlier runs were over
    std::string program;               // the version of the program; a newer one reads again what failed
    std::function<void(const std::string& path, const std::string& text)> tell;  // of a failure
    std::function<void(std::size_t done, std::size_t total, std::size_t failed)> showProgress;
};

// What a run did, in documents.
struct IndexRunReport {
    std::size_t found = 0;
    std::size_t read = 0;
    std::size_t failed = 0;  // of those that were read
    std::size_t moved = 0;   // known by their old paths, and not read again
    std::size_t removed = 0;
    std::size_t away = 0;            // known, but not to be found for now
    std::size_t foldersFailed = 0;   // that could not be listed
    std::size_t foldersWithout = 0;  // runs over no folder at all: none is known
};

// Reads what is new or changed below the folders, and leaves alone what lies elsewhere.
//
// A document is read again when its size or one of its times differ; when its time of change was so young at the last
// reading that a later change may have the same; when its last failure may pass; and, after any failure, by another
// version of the program. One that lies at another path than before, and is the same file by its file system, number
// and times, only changes its path.
//
// A document leaves the index when the folder that it lay in, or one around it that is all that is left, was listed to
// the end where it was at the time: at the same place of the same file system; and when the system says, while it is
// being removed, that nothing is at its path. What else is not found stays, and is marked as away.
//
// Records are written in short transactions: stopped at any time, the index is whole, and the next run goes on. Runs
// beside each other wait for each other's transactions only.
Result<IndexRunReport> UpdateIndex(Database& database, DocumentWorkers& workers, const IndexRunOptions& options);

// Removes all documents below a folder, whether or not they are there, and their texts from the file; a later run
// without folders leaves the folder out. Returns how many there were.
Result<std::size_t> ForgetFolder(Database& database, const std::string& folder);

}  // namespace ZEMA
