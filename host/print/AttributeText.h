// Attributes as the platform's attribute lister prints them.
#pragma once

#include <string>

#include "host/print/Value.h"

namespace ZEMA {

// One `name = value` for each attribute, sorted by name, the names padded to one column. Texts stand in quotes, where
// quotes and backslashes have a backslash and control characters are \u00XX; lists stand in parentheses and
// dictionaries in braces, a line for each element.
std::string AttributeText(const Value::Dictionary& attributes);

}  // namespace ZEMA
