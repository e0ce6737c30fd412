// Paths as texts.
#pragma once

#include <string>

namespace ZEMA {

// The folder around a path, and the last name in it.
std::string FolderOf(const std::string& path);
std::string NameOf(const std::string& path);

// The path without links, or as it is where there is nothing.
std::string RealPath(const std::string& path);

}  // namespace ZEMA
