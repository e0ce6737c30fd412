// XML property lists, read and written.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "host/print/Value.h"

namespace ZEMA {

// The value that a property list holds: strings, whole numbers, truth values, arrays and dictionaries. Null when the
// text is no such list; `problem` then says in words why. White space around strings is not kept.
std::optional<Value> ReadPropertyList(std::string_view text, std::string& problem);

// The parts of a property list that is written as it goes: what comes first, a value, what comes last. Characters that
// XML cannot hold are left out. `depth` is how many tabs stand before the value's lines.
std::string PropertyListHead();
void AppendPropertyListValue(const Value& value, std::size_t depth, std::string& text);
std::string PropertyListTail();

}  // namespace ZEMA
