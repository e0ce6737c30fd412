// Values as records, property lists and JSON have them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace ZEMA {

// A text, a number, a truth value, or a list or dictionary of values. Texts are UTF-8.
struct Value {
    using List = std::vector<Value>;
    using Dictionary = std::vector<std::pair<std::string, Value>>;  // in the order in which it is written

    std::variant<std::string, std::int64_t, double, bool, List, Dictionary> content;

    const std::string* AsText() const { return std::get_if<std::string>(&content); }
    const List* AsList() const { return std::get_if<List>(&content); }
    const Dictionary* AsDictionary() const { return std::get_if<Dictionary>(&content); }
};

// The value of the first such key, or null.
const Value* Find(const Value::Dictionary& dictionary, std::string_view key);

// The value of a platform object. The keys of a dictionary come in the order of their UTF-16 units; an object of a type
// that a Value cannot hold becomes the empty text. Plug-ins give values a few levels deep.
Value ValueOf(CFTypeRef object);

}  // namespace ZEMA
