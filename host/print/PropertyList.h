// XML property lists, read and written.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/print/Value.h"
#include "host/system/Failure.h"

namespace ZEMA {

// The value that a property list holds: strings, whole numbers, truth values, arrays and dictionaries. White
// space around strings is not kept. A text that is no such list is Damaged.
Result<Value> ReadPropertyList(std::string_view text);

// The parts of a property list that is written as it goes: what comes first, a value, what comes last. Characters that
// XML cannot hold are left out. `depth` is how many tabs stand before the value's lines.
std::string PropertyListHead();
void AppendPropertyListValue(const Value& value, std::size_t depth, std::string& text);
std::string PropertyListTail();

}  // namespace ZEMA
