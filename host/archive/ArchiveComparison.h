// Whether an archive on the disk is the one that was meant.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

// The stored names, as bytes, of the files that no path leads to: another one has their name, or it is none.
std::vector<std::string> NamesOfHiddenFiles(const ZipStorageVolume& volume);

// The members of a node and of all below it.
std::vector<ZipFileHeader*> MembersBelow(const ZipTreeNode& top);

// How many members a path leads to: not those whose name another one has, or whose name is none.
std::size_t CountNamedMembers(const ZipStorageVolume& volume);

// Compares a volume that was edited with one that was mounted from the result: the same members at the same offsets,
// with the same sizes and sums, under the same names, and the data of those that were opened in the edit where it
// should be. Folders that are only there because something lies in them do not count.
[[nodiscard]] bool HoldSameMembers(const ZipStorageVolume& edited, ZipStorageVolume& written);

}  // namespace ZEMA
