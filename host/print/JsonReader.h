// JSON read back.
#pragma once

#include <optional>
#include <string_view>

#include "host/print/Value.h"

namespace ZEMA {

// The value in a text; none where it is no JSON. Null, which no Value is, becomes the empty text.
std::optional<Value> ReadJson(std::string_view text);

}  // namespace ZEMA
