// Queries from the command line.
#pragma once

#include <optional>
#include <string>

#include "host/search/Query.h"

namespace ZEMA {

// Reads a query; none, with a message that shows where and what was expected, when it is wrong.
std::optional<Query> ReadQuery(const std::string& text);

}  // namespace ZEMA
