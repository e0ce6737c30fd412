// Following paths through the storage tree.
#pragma once

#include <cstdint>

#include "storage/Directory.h"
#include "storage/PathComponents.h"

namespace ZEMA {

// A path is a text of components separated by "/", or a list of them, followed from a directory. "." and ".." are
// resolved in the path itself first (NormalizeComponents), then each component is followed through the open
// directories, through the storage, and through archives, which are mounted on the way. Names are compared without
// regard to case.
//
// Every operation takes StorageMutex for its whole run; failure is null or false. Storage factories are asked with the
// lock held and may follow paths themselves; see storage/Resolution.h for what a path of many missing components costs.

// The root of the tree, made on first use and kept by the object registry.
RefPointer<Directory> GetRootDirectory();

// Follows the components through open directories alone and takes those that it followed off the list, as well as empty
// ones where the storage skips them. Null when ".." leads above the top.
RefPointer<Directory> FindOpenDirectory(Directory& directory, BasicArray<String>& components);

// With `create`, missing levels are made one by one, below the deepest one that the path leads to.
RefPointer<Directory> OpenDirectory(Directory& directory, const String& path, bool create);
RefPointer<Directory> OpenDirectory(Directory& directory, const BasicArray<String>& components, bool create);

// For a storage factory that is being asked: opens what all components but the last lead to. Other than following them
// anew, it takes no longer for a long path.
RefPointer<Directory> OpenAskedParent(const Directory::OpenArgs& args);

bool DirectoryExists(Directory& directory, const String& path);
bool DirectoryExists(Directory& directory, const BasicArray<String>& components);

// Fails for an empty path, for a last component "..", and when asked to cut the file without write access. With
// `create` the directories on the way are made too.
RefPointer<File> OpenFile(Directory& directory, const String& path, const AccessStyle* style, bool create,
                          const std::uint64_t* truncateTo);
RefPointer<File> OpenFile(Directory& directory, const BasicArray<String>& components, const AccessStyle* style,
                          bool create, const std::uint64_t* truncateTo);

bool IsFile(Directory& directory, const String& path);
bool IsFile(Directory& directory, const BasicArray<String>& components);

bool GetChildFlags(Directory& directory, const String& path, ElementFlags* flags);
bool GetChildFlags(Directory& directory, const BasicArray<String>& components, ElementFlags* flags);
bool SetChildFlags(Directory& directory, const String& path, const ElementFlags* flags);
bool SetChildFlags(Directory& directory, const BasicArray<String>& components, const ElementFlags* flags);

// The last component is a pattern (see MatchPattern). Open child directories come first and win over entries of the
// same name, so a mounted archive is listed as a directory. The answer is that of the directory's own List.
bool List(Directory& directory, const String& patternPath, Listing* listing);
bool List(Directory& directory, const BasicArray<String>& components, Listing* listing);

}  // namespace ZEMA
