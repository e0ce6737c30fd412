// JSON that is written as it goes, however large it becomes and however deep it nests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "host/print/Value.h"

namespace ZEMA {

// Puts values into words on one line, commas included, and hands them on in pieces; nothing is kept of what has gone.
// Within an object each value follows its Key. That begins and ends match is the caller's part.
class JsonWriter {
public:
    // Answers false when a piece could not be written; nothing more is handed to it then.
    using Sink = std::function<bool(std::string_view piece)>;

    explicit JsonWriter(Sink sink) : sink_(std::move(sink)) {}

    void BeginObject() { Begin('{'); }
    void EndObject() { End('}'); }
    void BeginArray() { Begin('['); }
    void EndArray() { End(']'); }
    // In keys and texts what is not UTF-8 becomes U+FFFD.
    void Key(std::string_view utf8);
    void Text(std::string_view utf8);
    void Number(std::uint64_t number);
    void SignedNumber(std::int64_t number);
    // The shortest text that reads back as the same 32 or 64 bits; null where JSON has none.
    void Float(float number);
    void Float(double number);
    void Bool(bool value);
    void Null();

    void Text(std::string_view key, std::string_view utf8) { Key(key), Text(utf8); }
    // Any bytes; those that are not UTF-8 also in base64, under the key with "Bytes" behind it.
    void Path(std::string_view key, std::string_view bytes);
    void Number(std::string_view key, std::uint64_t number) { Key(key), Number(number); }
    void Float(std::string_view key, float number) { Key(key), Float(number); }
    void Bool(std::string_view key, bool value) { Key(key), Bool(value); }

    // Ends the line and hands on what is left; false when anything could not be written.
    bool Finish();

private:
    void Begin(char bracket);
    void End(char bracket);
    void Word(std::string_view word);  // a whole value
    void Quoted(std::string_view utf8);
    void Separate();
    void HandOnWhenFull();

    Sink sink_;
    std::string pending_;
    bool follows_ = false;  // another value, so that a comma comes first
    bool failed_ = false;
};

// The same into a text, without a line end: `write` is called with a writer.
template <class Write>
std::string JsonOf(Write write) {
    std::string text;
    JsonWriter json([&text](std::string_view piece) {
        text += piece;
        return true;
    });
    write(json);
    json.Finish();
    text.pop_back();
    return text;
}

void WriteValue(const Value& value, JsonWriter& json);

// The value on one line, without a line end.
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
