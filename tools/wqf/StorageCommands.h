// The commands over files and folders, in which an archive is a folder.
#pragma once

#include <string>
#include <vector>

#include "host/archive/ArchiveCommands.h"
#include "host/archive/ArchiveMend.h"
#include "host/archive/StorageReport.h"

namespace ZEMA {

// The forms of a listing.
enum class ListingFormat { Text, Json, Ndjson };

// What `ls` shows, and how.
struct ListOptions {
    bool columns = false;
    bool recursive = false;
    ListingFormat format = ListingFormat::Text;
    std::vector<std::string> paths;
};
int RunLs(const ListOptions& options);

int RunCat(const std::vector<std::string>& paths);
int RunCp(const CopyOptions& options, const std::vector<std::string>& paths);  // the last one is the target
int RunMv(const CopyOptions& options, const std::vector<std::string>& paths);
int RunRm(const RemoveOptions& options, const std::vector<std::string>& paths);
int RunMkdir(const MakeOptions& options, const std::vector<std::string>& paths);
int RunNew(const std::vector<std::string>& paths);
int RunMend(const MendOptions& options, const std::vector<std::string>& paths);

// Failures go to standard error.
StorageReport ReportOf(const char* verb);

int ExitStatusOf(const StorageReport& report);

}  // namespace ZEMA
