// Lists of paths as other programs hand them over.
#pragma once

#include <string>
#include <vector>

#include "host/system/Failure.h"

namespace ZEMA {

// The paths in `file`, or on standard input for "-", with a zero byte between each two; one at the end adds no path.
Result<std::vector<std::string>> ReadPathList(const std::string& file);

}  // namespace ZEMA
