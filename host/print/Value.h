// Values as records, property lists and JSON have them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ZEMA {

// A text, a number, a truth value, or a list or dictionary of values. Texts are UTF-8.
struct Value {
    using List = std::vector<Value>;
    struct Item;
    using Dictionary = std::vector<Item>;  // in the order in which it is written

    std::variant<std::string, std::int64_t, double, bool, List, Dictionary> content;

    // Each is null for a value of another kind.
    const std::string* AsText() const;
    const List* AsList() const;
    const Dictionary* AsDictionary() const;
};

// A value under its key.
struct Value::Item {
    std::string key;
    Value value;
};

inline const std::string* Value::AsText() const {
    return std::get_if<std::string>(&content);
}

inline const Value::List* Value::AsList() const {
    return std::get_if<List>(&content);
}

inline const Value::Dictionary* Value::AsDictionary() const {
    return std::get_if<Dictionary>(&content);
}

// The value of the first such key, or null.
const Value* Find(const Value::Dictionary& dictionary, std::string_view key);

// The value of a platform object. The keys of a dictionary come in the order of their UTF-16 units; an object of a type
// that a Value cannot hold becomes the empty text. Plug-ins give values a few levels deep.
Value ValueOf(CFTypeRef object);

}  // namespace ZEMA
