#include "host/print/JsonText.h"

#include <nlohmann/json.hpp>

namespace ZEMA {

namespace {

using Json = nlohmann::ordered_json;

Json JsonOf(const Value& value);

struct JsonMaker {
    template <class Scalar>
    Json operator()(const Scalar& value) const {
        return value;
    }
    Json operator()(const Value::List& values) const {
        Json array = Json::array();
        for (const Value& value : values) array.push_back(JsonOf(value));
        return array;
    }
    Json operator()(const Value::Dictionary& values) const {
        // An ordered object looks through all its keys for each new one; as a list of pairs it is as quick as it looks.
        Json::object_t object;
        object.reserve(values.size());
        for (const auto& [key, value] : values) object.Container::emplace_back(key, JsonOf(value));
        return object;
    }
};

Json JsonOf(const Value& value) {
    return std::visit(JsonMaker(), value.content);
}

}  // namespace

std::string JsonText(const Value& value) {
    return JsonOf(value).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string JsonSequence::Item(const Value& value) {
    return Item(JsonText(value));
}

std::string JsonSequence::Item(const std::string& json) {
    const std::string start = !asArray_ ? "" : empty_ ? "\n" : ",\n";
    empty_ = false;
    return start + json + (asArray_ ? "" : "\n");
}

}  // namespace ZEMA
