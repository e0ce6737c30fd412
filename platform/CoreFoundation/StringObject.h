// How texts lie in memory. Not for use outside of this library.
//
// A text that cannot change is one block: this header, then its units, 8 bits each while all are ASCII, else 16. A
// text that can change keeps its units in a growing buffer of either kind; once wide it stays wide, so the same text
// can exist in both forms.
#pragma once

#include <CoreFoundation/CFString.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "platform/CoreFoundation/CFRuntime.h"

// The head of every text; its form says which kind of units follow, or that it is a MutableText.
struct __CFString : ZEMA::CF::Object {
    static constexpr std::uint8_t kWide = 1;
    static constexpr std::uint8_t kMutable = 2;

    constexpr __CFString(std::uint8_t stringForm, std::uint32_t unitCount, std::uint32_t count = 1)
        : Object(ZEMA::CF::Type::String, stringForm, count), length(unitCount) {}

    std::uint32_t length;  // units
};

namespace ZEMA::CF {

static_assert(sizeof(__CFString) == 12);

// A constant in 8-bit form, made by the compiler: usable before any constructor has run.
template <std::size_t N>
struct ConstantText {
    constexpr explicit ConstantText(const char (&literal)[N]) : head(0, N - 1, kConstantBit) {
        for (std::size_t i = 0; i < N; ++i) text[i] = literal[i];
    }
    __CFString head;
    char text[N] = {};
};

// A text that can change. Never goes back from wide units to narrow ones, unless it has become empty.
struct MutableText : __CFString {
    MutableText() : __CFString(kMutable, 0) {}
    bool IsWide() const { return !wide.empty(); }
    void Append(std::span<const char> units);
    void Append(std::span<const UniChar> units);
    void Delete(std::size_t position, std::size_t count);

    std::string narrow;         // the text while it is ASCII
    std::vector<UniChar> wide;  // else the text
};

inline constexpr std::size_t kMaximumLength = 0xFFFFFFFE;  // of a text; a longer one is out of memory

// The units of a text, or of a part of it, where they lie. Small enough to be passed in registers.
class TextView {
public:
    TextView(const char* units, std::size_t length)
        : units_(units), length_(static_cast<std::uint32_t>(length)), isWide_(false) {}
    TextView(const UniChar* units, std::size_t length)
        : units_(units), length_(static_cast<std::uint32_t>(length)), isWide_(true) {}

    bool IsWide() const { return isWide_; }
    std::size_t Length() const { return length_; }
    std::span<const char> Narrow() const { return {static_cast<const char*>(units_), length_}; }
    std::span<const UniChar> Wide() const { return {static_cast<const UniChar*>(units_), length_}; }
    UniChar operator[](std::size_t index) const {
        return isWide_ ? Wide()[index] : static_cast<UniChar>(Narrow()[index]);
    }
    TextView Part(std::size_t position, std::size_t count) const {
        return isWide_ ? TextView(Wide().data() + position, count) : TextView(Narrow().data() + position, count);
    }

    // Calls `function` with the span of units in the form they have.
    template <class Function>
    auto Visit(Function function) const {
        return isWide_ ? function(Wide()) : function(Narrow());
    }

private:
    const void* units_;
    std::uint32_t length_;
    bool isWide_;
};

TextView ViewOf(const MutableText& text);

inline TextView ViewOf(CFStringRef reference) {
    const __CFString& text = Checked(reference, Type::String);
    if (text.form & __CFString::kMutable) return ViewOf(static_cast<const MutableText&>(text));
    const void* units = reinterpret_cast<const std::byte*>(&text) + sizeof(__CFString);
    if (text.form & __CFString::kWide) return {static_cast<const UniChar*>(units), text.length};
    return {static_cast<const char*>(units), text.length};
}

TextView ViewOf(CFStringRef text, CFRange range);  // a range out of bounds ends the process

// A text that cannot change, with one reference of the caller's; the empty one is the shared constant.
CFStringRef NewText(TextView units);
CFStringRef EmptyText();

// For makers that write the units themselves. `length` is not 0. For a wide text at least one unit must not be ASCII.
template <class Unit>
struct NewUnits {
    CFStringRef text;
    Unit* units;
};
NewUnits<char> NewNarrowText(std::size_t length);
NewUnits<UniChar> NewWideText(std::size_t length);

template <class Unit>
bool IsAscii(std::span<const Unit> units);

inline bool IsHighSurrogate(UniChar unit) {
    return (unit & 0xFC00) == 0xD800;
}
inline bool IsLowSurrogate(UniChar unit) {
    return (unit & 0xFC00) == 0xDC00;
}
inline char32_t PairToCodePoint(UniChar high, UniChar low) {
    return 0x10000 + ((static_cast<char32_t>(high) - 0xD800) << 10) + (static_cast<char32_t>(low) - 0xDC00);
}

// The text as bytes of an encoding. Stops at the first unit that does not fit or cannot be written (`lossByte` stands
// for it in ASCII, unless 0). Null `output`: counts only. Gives the number of units used and of bytes written.
struct Encoded {
    std::size_t unitCount;
    std::size_t byteCount;
};
Encoded Encode(TextView text, CFStringEncoding encoding, UInt8 lossByte, UInt8* output, std::size_t capacity);

// Null when the bytes are not text of that encoding.
CFStringRef Decode(std::span<const UInt8> bytes, CFStringEncoding encoding);

}  // namespace ZEMA::CF
