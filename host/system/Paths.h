// Paths as texts, and what is found where they lead. Paths are bytes.
#pragma once

#include <sys/stat.h>

#include <ctime>
#include <string>

#include "host/system/Failure.h"

namespace ZEMA {

// The folder around a path, "." where it names none, and the last name in it.
std::string FolderOf(const std::string& path);
std::string NameOf(const std::string& path);

// The path from the root on; nothing is taken out of it.
Result<std::string> AbsolutePath(const std::string& path);

// The path without links, as far as there is anything; as it is where the system cannot tell.
std::string RealPath(const std::string& path);

// What is installed with this program: `path` from the folder around the one that the program lies in, links followed.
// Empty when the system does not tell where that is.
std::string BesideProgram(const std::string& path);

// Says what else is there unless the path leads to a regular file, also through links. Opens nothing.
Failure CheckRegularFile(const std::string& path);

// Whether both are of one file, under whatever names.
bool IsSameFile(const struct stat& a, const struct stat& b);

// When the contents of a file were changed.
timespec ModifiedTime(const struct stat& status);

// Whether the path goes on behind the name of a regular file, or of a link to one, as paths into archives do.
bool LeadsIntoFile(const std::string& path);

}  // namespace ZEMA
