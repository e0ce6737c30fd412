// Names of archive members: from bytes into the tree, and from the tree into bytes.
#pragma once

#include <cstddef>
#include <string_view>

#include "core/AString.h"
#include "core/String.h"
#include "storage/zip/ZipTreeNode.h"

namespace ZEMA {

// Enters the members of an archive in its tree, in the order of the central directory.
//
// A name is ASCII or else UTF-8 text. Each part before a "/" is a directory, made where it is missing; what follows the
// last "/" is a file, unless a node of that name is there already; nothing behind it makes the member the directory's
// own. A byte-order mark in front of a part and one zero byte at its end are not part of the text: the node goes
// without them, and so may have the name of another member. A member gets no node, and neither do the directories on
// its way, when its name is empty or a part cannot be decoded, is "." or "..", or holds another zero character: no path
// reaches such a name, and copying it out of the archive would lead astray.
//
// Errors: std::bad_alloc past kMostArchiveNodes. A name of 65,535 bytes makes half as many directories, each of which
// takes
//         a hundred times the memory that its two bytes take on the disk.
class ZipNamePlacer {
public:
    explicit ZipNamePlacer(ZipTreeNode& root) : root_(root), lastFolder_(&root) {}

    // False for a name that no archive may hold: one with an empty part before a "/", unless the name cannot be
    // decoded.
    [[nodiscard]] bool Place(std::string_view name, ZipFileHeader& member);

private:
    ZipTreeNode& GetOrAdd(ZipTreeNode& folder, const String& name, ZipFileHeader* header);

    ZipTreeNode& root_;
    std::size_t nodeCount_ = 0;
    AString lastPath_;         // with its "/": members of one directory mostly stand together
    ZipTreeNode* lastFolder_;  // where that path leads
};

// The stored name of a new member: its path inside the archive as UTF-8, with a "/" at the end for a directory. False
// when `name` cannot be one part of a path, or when the whole is too long.
[[nodiscard]] bool BuildMemberName(const ZipTreeNode& parent, const String& name, bool directory, AString& path);

}  // namespace ZEMA
