// Making texts and looking at their units.
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_map>

#include "platform/CoreFoundation/StringObject.h"

namespace ZEMA::CF {
namespace {

constinit ConstantText emptyText("");

template <class Unit>
NewUnits<Unit> Allocate(std::uint8_t form, std::size_t length) {
    if (length > kMaximumLength) throw std::bad_alloc();
    void* block = ::operator new(sizeof(__CFString) + length * sizeof(Unit));
    const auto* text = new (block) __CFString(form, static_cast<std::uint32_t>(length));
    void* units = static_cast<std::byte*>(block) + sizeof(__CFString);
    return {text, static_cast<Unit*>(units)};
}

CFStringRef NewNarrowCopy(std::span<const char> units) {
    const NewUnits<char> copy = NewNarrowText(units.size());
    std::memcpy(copy.units, units.data(), units.size());
    return copy.text;
}

CFStringRef NewNarrowCopy(std::span<const UniChar> units) {
    const NewUnits<char> copy = NewNarrowText(units.size());
    std::transform(units.begin(), units.end(), copy.units, [](UniChar unit) { return static_cast<char>(unit); });
    return copy.text;
}

CFStringRef NewWideCopy(std::span<const UniChar> units) {
    const NewUnits<UniChar> copy = NewWideText(units.size());
    std::memcpy(copy.units, units.data(), units.size_bytes());
    return copy.text;
}

void DestroyText(const Object* object) noexcept {
    if (object->form & __CFString::kMutable) {
        delete static_cast<const MutableText*>(object);
    } else {
        ::operator delete(const_cast<Object*>(object));
    }
}

bool EqualTexts(const Object* object1, const Object* object2) {
    const TextView left = ViewOf(static_cast<CFStringRef>(object1));
    const TextView right = ViewOf(static_cast<CFStringRef>(object2));
    if (left.Length() != right.Length()) return false;
    return left.Visit([&](auto leftUnits) {
        return right.Visit([&](auto rightUnits) { return std::ranges::equal(leftUnits, rightUnits); });
    });
}

// Four units side by side in one number, each in 16 bits.
std::uint64_t FourUnits(const UniChar* units) {
    std::uint64_t word;
    std::memcpy(&word, units, sizeof(word));
    return word;
}

std::uint64_t FourUnits(const char* units) {
    std::uint32_t bytes;
    std::memcpy(&bytes, units, sizeof(bytes));
    std::uint64_t word = bytes;
    word = (word | (word << 16)) & 0x0000FFFF0000FFFF;
    return (word | (word << 8)) & 0x00FF00FF00FF00FF;
}

// Units count by value: the same text has the same hash in both forms.
CFHashCode HashText(const Object* object) {
    const TextView text = ViewOf(static_cast<CFStringRef>(object));
    Hasher hasher;
    hasher.Add(text.Length());
    text.Visit([&]<class Unit>(std::span<const Unit> units) {
        for (; units.size() >= 4; units = units.subspan(4)) hasher.Add(FourUnits(units.data()));
        if (units.empty()) return;
        Unit rest[4] = {};
        std::memcpy(rest, units.data(), units.size_bytes());
        hasher.Add(FourUnits(rest));
    });
    return hasher.state;
}

}  // namespace

const Class kStringClass = {DestroyText, EqualTexts, HashText};

TextView ViewOf(const MutableText& text) {
    if (text.IsWide()) return {text.wide.data(), text.wide.size()};
    return {text.narrow.data(), text.narrow.size()};
}

TextView ViewOf(CFStringRef text, CFRange range) {
    const TextView whole = ViewOf(text);
    const auto length = static_cast<CFIndex>(whole.Length());
    Require(range.location >= 0 && range.location <= length);
    Require(range.length >= 0 && range.length <= length - range.location);
    return whole.Part(static_cast<std::size_t>(range.location), static_cast<std::size_t>(range.length));
}

CFStringRef EmptyText() {
    return &emptyText.head;
}

NewUnits<char> NewNarrowText(std::size_t length) {
    return Allocate<char>(0, length);
}

NewUnits<UniChar> NewWideText(std::size_t length) {
    return Allocate<UniChar>(__CFString::kWide, length);
}

CFStringRef NewText(TextView text) {
    if (text.Length() == 0) return EmptyText();
    if (!text.IsWide()) return NewNarrowCopy(text.Narrow());
    return IsAscii(text.Wide()) ? NewNarrowCopy(text.Wide()) : NewWideCopy(text.Wide());
}

// Looks at eight bytes at a step: nearly all text that comes through here is ASCII.
template <class Unit>
bool IsAscii(std::span<const Unit> units) {
    constexpr std::uint64_t kAboveAscii = sizeof(Unit) == 1 ? 0x8080808080808080 : 0xFF80FF80FF80FF80;
    constexpr std::size_t kUnitsPerWord = sizeof(std::uint64_t) / sizeof(Unit);
    std::size_t position = 0;
    for (; units.size() - position >= kUnitsPerWord; position += kUnitsPerWord) {
        std::uint64_t word;
        std::memcpy(&word, units.data() + position, sizeof(word));
        if (word & kAboveAscii) return false;
    }
    for (; position < units.size(); ++position) {
        if (units[position] >= 0x80) return false;
    }
    return true;
}

template bool IsAscii(std::span<const UInt8> units);
template bool IsAscii(std::span<const UniChar> units);

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

CFTypeID CFStringGetTypeID() {
    return static_cast<CFTypeID>(Type::String);
}

CFStringRef __CFStringMakeConstantString(const char* literal) {
    // Neither the table nor its texts ever go: other objects that live until the very end may hold them.
    static std::mutex& mutex = *new std::mutex;
    static auto& constants = *new std::unordered_map<std::string, CFStringRef>;
    const std::scoped_lock lock(mutex);
    CFStringRef& constant = constants[literal];
    if (!constant) {
        constant = CFStringCreateWithCString(kCFAllocatorDefault, literal, kCFStringEncodingUTF8);
        Require(constant != nullptr);
        constant->references.fetch_or(kConstantBit, std::memory_order_relaxed);
    }
    return constant;
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex byteCount, CFStringEncoding encoding,
                                    Boolean) {
    Require(byteCount >= 0);
    if (byteCount == 0) return EmptyText();
    return Decode({bytes, static_cast<std::size_t>(byteCount)}, encoding);
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* bytes, CFStringEncoding encoding) {
    return CFStringCreateWithBytes(allocator, reinterpret_cast<const UInt8*>(bytes),
                                   static_cast<CFIndex>(std::strlen(bytes)), encoding, false);
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* units, CFIndex count) {
    Require(count >= 0);
    if (static_cast<std::size_t>(count) > kMaximumLength) throw std::bad_alloc();
    return NewText({units, static_cast<std::size_t>(count)});
}

CFStringRef CFStringCreateCopy(CFAllocatorRef, CFStringRef text) {
    if (Checked(text, Type::String).form & __CFString::kMutable) return NewText(ViewOf(text));
    return static_cast<CFStringRef>(CFRetain(text));
}

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef allocator, CFStringRef text, CFRange range) {
    const TextView part = ViewOf(text, range);
    return part.Length() == text->length ? CFStringCreateCopy(allocator, text) : NewText(part);
}

CFIndex CFStringGetLength(CFStringRef text) {
    return Checked(text, Type::String).length;
}

UniChar CFStringGetCharacterAtIndex(CFStringRef text, CFIndex index) {
    return ViewOf(text, {index, 1})[0];
}

void CFStringGetCharacters(CFStringRef text, CFRange range, UniChar* buffer) {
    ViewOf(text, range).Visit([&](auto units) {
        std::transform(units.begin(), units.end(), buffer, [](auto unit) { return static_cast<UniChar>(unit); });
    });
}
