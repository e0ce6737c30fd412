#include "host/print/JsonWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace ZEMA {

namespace {

constexpr std::size_t kPieceSize = 1 << 16;

// Room for any number of 64 bits and any 32-bit float.
using Digits = std::array<char, 32>;

template <class Number>
std::string_view Print(Number number, Digits& digits) {
    const std::to_chars_result result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return {digits.data(), static_cast<std::size_t>(result.ptr - digits.data())};
}

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

void JsonWriter::Key(std::string_view name) {
    Separate();
    pending_ += '"';
    pending_ += name;
    pending_ += "\":";
    follows_ = false;
}

void JsonWriter::Text(std::string_view utf8) {
    Value(utf8.empty() ? "\"\"" : JsonText({std::string(utf8)}));
}

void JsonWriter::Number(std::uint64_t number) {
    Digits digits;
    Value(Print(number, digits));
}

void JsonWriter::Float(float number) {
    if (!std::isfinite(number)) return Null();
    Digits digits;
    Value(Print(number, digits));
}

void JsonWriter::Bool(bool value) {
    Value(value ? "true" : "false");
}

void JsonWriter::Null() {
    Value("null");
}

bool JsonWriter::Finish() {
    pending_ += '\n';
    if (!failed_) failed_ = !sink_(pending_);
    pending_.clear();
    return !failed_;
}

void JsonWriter::Begin(char bracket) {
    Separate();
    pending_ += bracket;
    follows_ = false;
}

void JsonWriter::End(char bracket) {
    pending_ += bracket;
    follows_ = true;
    HandOnWhenFull();
}

void JsonWriter::Value(std::string_view words) {
    Separate();
    pending_ += words;
    follows_ = true;
    HandOnWhenFull();
}

// Nothing has to be remembered of the levels above: behind a value or an end stands a comma unless an end does.
void JsonWriter::Separate() {
    if (follows_) pending_ += ',';
}

void JsonWriter::HandOnWhenFull() {
    if (pending_.size() < kPieceSize) return;
    if (!failed_) failed_ = !sink_(pending_);
    pending_.clear();
}

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
