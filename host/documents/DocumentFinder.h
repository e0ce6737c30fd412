// From the paths that a user names, or a list of them, to the documents.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/system/Failure.h"

namespace ZEMA {

// The paths in `file`, or on standard input for "-", with a zero byte between each two; one at the end adds no path.
Result<std::vector<std::string>> ReadPathList(const std::string& file);

// One document, or one thing that was named as one.
struct FoundDocument {
    std::string path;  // as given; below a folder, its path with the rest behind it
    Failure failure;   // why it is not to be opened; none for a file
};

// Whether files of this name in a folder are documents: it ends in ".wqf" or ".wqfml", in any case.
bool IsDocumentName(std::string_view name);

// Appends what `path` stands for. Paths are bytes.
//
// A folder, or a link to one, is searched below for regular files, and links to them, that are named like
// documents; hidden ones count, links to folders are not entered. They come in the order of the bytes of
// their paths. A folder that cannot be read is a document with a failure, so that its loss is seen.
//
// Anything else is a document whatever its ending, and has a failure unless it is a regular file or a link to one, or
// the path leads on behind such a file, as into an archive.
//
// Returns false when `path` is a folder in which nothing was found. Calls `inFolder`, unless it is empty, before it
// looks into each folder.
bool FindDocuments(const std::string& path, std::vector<FoundDocument>& documents,
                   const std::function<void()>& inFolder = {});

}  // namespace ZEMA
