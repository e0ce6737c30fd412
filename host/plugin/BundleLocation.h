// Where the plug-in bundle lies.
#pragma once

#include <optional>
#include <string>

namespace ZEMA {

// The folder `given`, unless it is empty. Otherwise the one in lib/wqf beside the folder of this program. Null, with a
// `problem`, when no such folder exists.
std::optional<std::string> FindBundle(const std::string& given, std::string& problem);

}  // namespace ZEMA
