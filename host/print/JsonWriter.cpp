#include "host/print/JsonWriter.h"

#include <array>
#include <charconv>
#include <cmath>

#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

constexpr std::size_t kPieceSize = 1 << 16;

// Room for any number of 64 bits.
using Digits = std::array<char, 32>;

template <class Number>
std::string_view Print(Number number, Digits& digits) {
    const std::to_chars_result result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return {digits.data(), static_cast<std::size_t>(result.ptr - digits.data())};
}

// The short escapes of JSON (RFC 8259, section 7), or null for a character that has none.
const char* ShortEscape(char unit) {
    switch (unit) {
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        case '\b':
            return "\\b";
        case '\f':
            return "\\f";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return nullptr;
    }
}

// Only what must be escaped is, so that texts stay readable.
void AppendQuoted(std::string_view utf8, std::string& json) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    json += '"';
    for (const char unit : utf8) {
        const auto byte = static_cast<unsigned char>(unit);
        if (const char* const escape = ShortEscape(unit)) {
            json += escape;
        } else if (byte < 0x20) {
            json.append("\\u00") += {kDigits[byte >> 4], kDigits[byte & 0xF]};
        } else {
            json += unit;
        }
    }
    json += '"';
}

// Writes one kind of value.
struct ValueWriter {
    JsonWriter& json;

    void operator()(const std::string& text) const { json.Text(text); }
    void operator()(std::int64_t number) const { json.SignedNumber(number); }
    void operator()(double number) const { json.Float(number); }
    void operator()(bool value) const { json.Bool(value); }
    void operator()(const Value::List& values) const {
        json.BeginArray();
        for (const Value& value : values) WriteValue(value, json);
        json.EndArray();
    }
    void operator()(const Value::Dictionary& values) const {
        json.BeginObject();
        for (const auto& [key, value] : values) {
            json.Key(key);
            WriteValue(value, json);
        }
        json.EndObject();
    }
};

}  // namespace

void JsonWriter::Key(std::string_view utf8) {
    Quoted(utf8);
    pending_ += ':';
    follows_ = false;
}

void JsonWriter::Text(std::string_view utf8) {
    Quoted(utf8);
    follows_ = true;
    HandOnWhenFull();
}

void JsonWriter::Path(std::string_view key, std::string_view bytes) {
    Text(key, bytes);
    if (!IsUtf8(bytes)) Text(std::string(key) + "Bytes", Base64Of(bytes));
}

void JsonWriter::Number(std::uint64_t number) {
    Digits digits;
    Word(Print(number, digits));
}

void JsonWriter::SignedNumber(std::int64_t number) {
    Digits digits;
    Word(Print(number, digits));
}

void JsonWriter::Float(float number) {
    if (!std::isfinite(number)) return Null();
    Digits digits;
    Word(Print(number, digits));
}

void JsonWriter::Float(double number) {
    if (!std::isfinite(number)) return Null();
    Digits digits;
    Word(Print(number, digits));
}

void JsonWriter::Bool(bool value) {
    Word(value ? "true" : "false");
}

void JsonWriter::Null() {
    Word("null");
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

void JsonWriter::Word(std::string_view word) {
    Separate();
    pending_ += word;
    follows_ = true;
    HandOnWhenFull();
}

void JsonWriter::Quoted(std::string_view utf8) {
    Separate();
    if (IsUtf8(utf8)) {
        AppendQuoted(utf8, pending_);
    } else {
        AppendQuoted(ReplaceInvalidUtf8(utf8), pending_);
    }
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

void WriteValue(const Value& value, JsonWriter& json) {
    std::visit(ValueWriter{json}, value.content);
}

std::string JsonText(const Value& value) {
    return JsonOf([&](JsonWriter& json) { WriteValue(value, json); });
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
