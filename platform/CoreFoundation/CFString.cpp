// Making texts and looking at their units.
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>
#include <unordered_map>

#include "platform/CoreFoundation/StringObject.h"

namespace ZEMA::CF {
namespace {

constexpr std::size_t kMaximumLength = std::numeric_limits<std::uint32_t>::max() - 1;

constinit ConstantText emptyText("");

template <class Unit>
NewUnits<Unit> Allocate(std::uint8_t form, std::size_t length, std::size_t unitCount) {
    if (length > kMaximumLength) throw std::bad_alloc();
    void* block = ::operator new(sizeof(__CFString) + unitCount * sizeof(Unit));
    const auto* text = new (block) __CFString(form, static_cast<std::uint32_t>(length));
    void* units = static_cast<std::byte*>(block) + sizeof(__CFString);
    return {text, static_cast<Unit*>(units)};
}

const void* UnitsBehind(const __CFString& text) {
    return reinterpret_cast<const std::byte*>(&text) + sizeof(__CFString);
}

const MutableText& AsMutable(const __CFString& text) {
    return static_cast<const MutableText&>(text);
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

// Takes four units at a step. They count by value: the same text has the same hash in both forms.
CFHashCode HashText(const Object* object) {
    const TextView text = ViewOf(static_cast<CFStringRef>(object));
    Hasher hasher;
    hasher.Add(text.Length());
    text.Visit([&](auto units) {
        for (std::size_t start = 0; start < units.size(); start += 4) {
            std::uint64_t word = 0;
            for (const auto unit : units.subspan(start, std::min<std::size_t>(4, units.size() - start))) {
                word = (word << 16) | static_cast<UniChar>(unit);
            }
            hasher.Add(word);
        }
    });
    return hasher.state;
}

}  // namespace

const Class kStringClass = {DestroyText, EqualTexts, HashText};

TextView ViewOf(CFStringRef reference) {
    const __CFString& text = Checked(reference, Type::String);
    if (text.form & __CFString::kMutable) {
        const MutableText& changing = AsMutable(text);
        if (changing.IsWide()) return {changing.wide.data(), changing.wide.size()};
        return {changing.narrow.data(), changing.narrow.size()};
    }
    if (text.form & __CFString::kWide) return {static_cast<const UniChar*>(UnitsBehind(text)), text.length};
    return {static_cast<const char*>(UnitsBehind(text)), text.length};
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
    const NewUnits<char> made = Allocate<char>(0, length, length + 1);
    made.units[length] = '\0';
    return made;
}

NewUnits<UniChar> NewWideText(std::size_t length) {
    return Allocate<UniChar>(__CFString::kWide, length, length);
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

const UniChar* CFStringGetCharactersPtr(CFStringRef text) {
    const TextView view = ViewOf(text);
    return view.IsWide() ? view.Wide().data() : nullptr;
}

const char* CFStringGetCStringPtr(CFStringRef text, CFStringEncoding encoding) {
    const TextView view = ViewOf(text);
    const bool isKept = encoding == kCFStringEncodingASCII || encoding == kCFStringEncodingUTF8;
    return isKept && !view.IsWide() ? view.Narrow().data() : nullptr;
}
