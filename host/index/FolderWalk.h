// What lies in a folder and the folders in it, with what the file system says of it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/index/FileSystems.h"
#include "host/index/IndexTables.h"
#include "host/system/Failure.h"

namespace ZEMA {

// A folder that was looked at.
struct WalkedFolder {
    FolderPlace place;
    Failure failure;  // why it was not listed to the end
};

// A document that was found, by its stamp: that of the file which a link leads to.
struct WalkedDocument {
    std::string path;
    FileStamp stamp;
};

// What one walk came upon.
struct Walk {
    std::map<std::string, WalkedFolder> folders;  // by absolute paths without links
    std::vector<WalkedDocument> documents;        // in the order of their paths
};

// Adds what lies below a folder, which is given by its path without links. What counts as a document, and that links to
// folders are not entered, is as for FindDocuments.
void WalkFolder(const std::string& folder, FileSystems& fileSystems, Walk& walk);

// Whether nothing stands at the path, not even a link. False where the system does not say so.
bool IsGone(const std::string& path);

}  // namespace ZEMA
