// Lists of paths as other programs hand them over.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ZEMA {

// The paths in `file`, or on standard input for "-", with a zero byte between each two; one at the end adds no path.
// Null, with a `problem`, when the list cannot be read.
std::optional<std::vector<std::string>> ReadPathList(const std::string& file, std::string& problem);

}  // namespace ZEMA
