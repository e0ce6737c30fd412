#include "host/print/JsonReader.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

namespace ZEMA {

namespace {

using Json = nlohmann::ordered_json;

Value ValueOf(const Json& json) {
    switch (json.type()) {
        case Json::value_t::string:
            return {json.get_ref<const std::string&>()};
        case Json::value_t::boolean:
            return {json.get<bool>()};
        case Json::value_t::number_integer:
        case Json::value_t::number_unsigned:
            return {json.get<std::int64_t>()};
        case Json::value_t::number_float:
            return {json.get<double>()};
        case Json::value_t::array: {
            Value::List list;
            for (const Json& item : json) list.push_back(ValueOf(item));
            return {std::move(list)};
        }
        case Json::value_t::object: {
            Value::Dictionary dictionary;
            for (const auto& [key, item] : json.items()) dictionary.push_back({key, ValueOf(item)});
            return {std::move(dictionary)};
        }
        default:
            return {std::string()};
    }
}

}  // namespace

std::optional<Value> ReadJson(std::string_view text) {
    const Json json = Json::parse(text, nullptr, false);
    return json.is_discarded() ? std::nullopt : std::optional(ValueOf(json));
}

}  // namespace ZEMA
