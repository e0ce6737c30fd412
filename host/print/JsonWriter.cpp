#include "host/print/JsonWriter.h"

#include <array>
#include <charconv>
#include <cmath>

#include "host/print/JsonText.h"

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

}  // namespace ZEMA
