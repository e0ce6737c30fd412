// JSON for what the program prints.
#pragma once

#include <string>

#include "host/print/Value.h"

namespace ZEMA {

// The value on one line, without a line end. Always valid JSON, in UTF-8.
std::string JsonText(const Value& value);

// Objects one after the other: as one array, or as one line each.
class JsonSequence {
public:
    explicit JsonSequence(bool asArray) : asArray_(asArray) {}

    std::string Head() const { return asArray_ ? "[" : ""; }
    std::string Item(const Value& value);
    std::string Item(const std::string& json);  // of an object
    std::string Tail() const { return !asArray_ ? "" : empty_ ? "]\n" : "\n]\n"; }

private:
    bool asArray_;
    bool empty_ = true;
};

}  // namespace ZEMA
