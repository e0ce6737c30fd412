#include "core/String.h"

#include <cstring>
#include <utility>

#include "core/Exception.h"
#include "core/NumberScan.h"
#include "platform/Foundation/CFPointer.h"

namespace ZEMA {
namespace {

using Foundation::CFPointer;

// The platform's constant; retaining and releasing it change nothing.
CFStringRef EmptyText() {
    return CFSTR("");
}

// The platform would take a byte of 128 or more as the character of that number, so the bytes are looked at here.
CFStringRef CreateFromAscii(std::string_view bytes) {
    if (bytes.empty() || !IsAscii(bytes)) return EmptyText();
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                   static_cast<CFIndex>(bytes.size()), kCFStringEncodingASCII, false);
}

std::string_view ViewOf(const char* text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

CFPointer<CFStringRef> TextOf(UniChar unit) {
    return CFPointer<CFStringRef>(CFStringCreateWithCharacters(kCFAllocatorDefault, &unit, 1));
}

constexpr CFStringEncoding PlatformEncoding(TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::Utf8:
            return kCFStringEncodingUTF8;
        case TextEncoding::Utf16BigEndian:
            return kCFStringEncodingUTF16BE;
        case TextEncoding::Utf16LittleEndian:
            return kCFStringEncodingUTF16LE;
    }
    return kCFStringEncodingInvalidId;
}

// A buffer for `size` bytes that a platform call fills.
char* MakeRoom(AString& bytes, std::uint64_t size) {
    if (size >= npos) RangeException::Throw();
    return bytes.ResizeForOverwrite(static_cast<std::uint32_t>(size));
}

AString EncodeUtf8(CFStringRef text) {
    // Twice what the longest form of a unit takes; callers may rely on the room that is left.
    constexpr std::uint64_t kRoomForUnit = 6;
    const std::uint64_t size = kRoomForUnit * static_cast<std::uint64_t>(CFStringGetLength(text)) + 1;
    AString bytes;
    char* const buffer = MakeRoom(bytes, size);
    // A failed conversion leaves the buffer empty.
    CFStringGetCString(text, buffer, static_cast<CFIndex>(size), kCFStringEncodingUTF8);
    bytes.Erase(static_cast<std::uint32_t>(std::strlen(buffer)));
    return bytes;
}

AString EncodeUtf16(CFStringRef text, CFStringEncoding encoding) {
    const CFIndex count = CFStringGetLength(text);
    const std::uint64_t size = 2 * static_cast<std::uint64_t>(count);
    AString bytes;
    char* const buffer = MakeRoom(bytes, size + 1);  // with a whole unit of zero behind the text
    CFStringGetBytes(text, CFRangeMake(0, count), encoding, 0, false, reinterpret_cast<UInt8*>(buffer),
                     static_cast<CFIndex>(size), nullptr);
    buffer[size] = 0;
    bytes.Erase(static_cast<std::uint32_t>(size));
    return bytes;
}

// The bytes of `count` units without one zero unit at their end.
CFIndex SizeWithoutTerminator(const UInt8* bytes, std::uint32_t count, CFIndex unitSize) {
    const CFIndex size = CFIndex{count} * unitSize;
    const bool isTerminated = bytes[size - 1] == 0 && bytes[size - unitSize] == 0;
    return isTerminated ? size - unitSize : size;
}

}  // namespace

String::String() : immutable_(EmptyText()) {}

String::String(const char* ascii) : immutable_(CreateFromAscii(ViewOf(ascii))) {}

String::String(const AString& ascii) : String(ascii.Data()) {}

String::String(CFStringRef text)
    : immutable_(text == nullptr ? EmptyText() : CFStringCreateCopy(kCFAllocatorDefault, text)) {}

String::String(const String& other) : String(other.CFString()) {}

String::String(String&& other) noexcept : String() {
    Swap(other);
}

String::String(const String& other, std::uint32_t p, std::uint32_t n) : immutable_(other.CreateCFString(p, n)) {}

String::~String() {
    CFRelease(CFString());
}

String& String::operator=(const String& other) {
    Assign(other);
    return *this;
}

String& String::operator=(String&& other) noexcept {
    String(std::move(other)).Swap(*this);
    return *this;
}

void String::Swap(String& other) noexcept {
    std::swap(immutable_, other.immutable_);
    std::swap(mutable_, other.mutable_);
}

void String::Assign(const String& other) {
    if (this != &other) String(other).Swap(*this);
}

void String::Assign(const AString& ascii) {
    AssignBytes(ascii.Data(), ascii.Length());
}

void String::Assign(const char* ascii) {
    Adopt(CreateFromAscii(ViewOf(ascii)));
}

void String::AssignBytes(const char* ascii, std::uint32_t count) {
    Adopt(ascii == nullptr ? EmptyText() : CreateFromAscii({ascii, count}));
}

void String::Clear() {
    Adopt(EmptyText());
}

std::uint32_t String::Length() const {
    return static_cast<std::uint32_t>(CFStringGetLength(CFString()));
}

CFStringRef String::CFString() const {
    return mutable_ != nullptr ? mutable_ : immutable_;
}

void String::Append(const String& other) {
    if (other.IsEmpty()) return;
    // Before the other's text is looked at: appending a text to itself replaces that.
    const CFMutableStringRef changing = MakeMutable();
    CFStringAppend(changing, other.CFString());
}

void String::Append(const char* ascii) {
    const std::string_view bytes = ViewOf(ascii);
    if (!bytes.empty() && IsAscii(bytes)) CFStringAppendCString(MakeMutable(), ascii, kCFStringEncodingASCII);
}

void String::AppendNumber(unsigned long number) {
    CFStringAppendFormat(MakeMutable(), nullptr, CFSTR("%u"), static_cast<unsigned>(number));
}

void String::Erase(std::uint32_t p, std::uint32_t n) {
    const CFRange range = Clamp(p, n);
    if (range.length > 0) CFStringDelete(MakeMutable(), range);
}

int String::Compare(const String& other) const {
    return static_cast<int>(CFStringCompare(CFString(), other.CFString(), 0));
}

bool String::LessNoCase(const String& other) const {
    return CompareRangeNoCase(Clamp(0, npos), other.CFString()) < 0;
}

int String::CompareNoCase(std::uint32_t p, std::uint32_t n, const String& other, std::uint32_t q,
                          std::uint32_t m) const {
    const CFPointer<CFStringRef> part(other.CreateCFString(q, m));
    return CompareRangeNoCase(Clamp(p, n), part.Get());
}

bool String::EqualsNoCaseAt(std::uint32_t p, std::uint32_t n, const String& other) const {
    return CompareRangeNoCase(Clamp(p, n), other.CFString()) == 0;
}

bool String::CharAtIs(std::uint32_t index, UniChar unit) const {
    const std::uint32_t length = Length();
    if (index == npos && length > 0) index = length - 1;
    return index < length && CFStringGetCharacterAtIndex(CFString(), index) == unit;
}

std::uint32_t String::Find(UniChar unit, std::uint32_t start) const {
    return FindWith(TextOf(unit).Get(), start, 0);
}

std::uint32_t String::FindNoCase(const String& text, std::uint32_t start) const {
    return FindWith(text.CFString(), start, kCFCompareCaseInsensitive);
}

std::uint32_t String::FindFirstOf(const String& set, std::uint32_t start) const {
    const CFPointer<CFCharacterSetRef> members(
        CFCharacterSetCreateWithCharactersInString(kCFAllocatorDefault, set.CFString()));
    CFRange found = {};
    if (!CFStringFindCharacterFromSet(CFString(), members.Get(), Clamp(start, npos), 0, &found)) return npos;
    return static_cast<std::uint32_t>(found.location);
}

void String::Split(UniChar separator, BasicArray<String>& pieces) const {
    Split(String(TextOf(separator).Get()), pieces);
}

void String::Split(const String& separator, BasicArray<String>& pieces) const {
    // Made before `pieces` is emptied: this text or the separator may be one of them.
    const bool isSeparator = *this == separator;
    const CFPointer<CFArrayRef> parts(
        IsEmpty() || isSeparator
            ? nullptr
            : CFStringCreateArrayBySeparatingStrings(kCFAllocatorDefault, CFString(), separator.CFString()));
    const bool isEmpty = IsEmpty();
    pieces.Clear();
    if (!isEmpty && isSeparator) pieces.PushBack(String());
    if (!parts) return;
    const CFIndex count = CFArrayGetCount(parts.Get());
    pieces.Reserve(static_cast<std::size_t>(count));
    for (CFIndex index = 0; index < count; ++index) {
        pieces.PushBack(String(static_cast<CFStringRef>(CFArrayGetValueAtIndex(parts.Get(), index))));
    }
}

CFStringRef String::CreateCFString(std::uint32_t p, std::uint32_t n) const {
    const CFRange range = Clamp(p, n);
    return range.length == 0 ? EmptyText() : CFStringCreateWithSubstring(kCFAllocatorDefault, CFString(), range);
}

AString String::ToAString(TextEncoding encoding, std::uint32_t p, std::uint32_t n) const {
    constexpr std::uint32_t kRoomOfEmptyText = 2;
    const CFStringEncoding platformEncoding = PlatformEncoding(encoding);
    const CFPointer<CFStringRef> text(CreateCFString(p, n));
    if (CFStringGetLength(text.Get()) == 0 || platformEncoding == kCFStringEncodingInvalidId) {
        AString empty;
        empty.Reserve(kRoomOfEmptyText);
        return empty;
    }
    if (encoding == TextEncoding::Utf8) return EncodeUtf8(text.Get());
    return EncodeUtf16(text.Get(), platformEncoding);
}

void String::FromBytes(TextEncoding encoding, const void* bytes, std::uint32_t count) {
    const CFStringEncoding platformEncoding = PlatformEncoding(encoding);
    if (count == 0 || platformEncoding == kCFStringEncodingInvalidId) {
        Clear();
        return;
    }
    const auto* const first = static_cast<const UInt8*>(bytes);
    const CFIndex size = SizeWithoutTerminator(first, count, encoding == TextEncoding::Utf8 ? 1 : 2);
    Adopt(CFStringCreateWithBytes(kCFAllocatorDefault, first, size, platformEncoding, false));
}

String FromUtf8(std::string_view bytes) {
    String text;
    text.FromBytes(TextEncoding::Utf8, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return text;
}

CFRange String::Clamp(std::uint32_t p, std::uint32_t n) const {
    const std::uint64_t length = Length();
    if (std::uint64_t{p} + n <= length) return CFRangeMake(p, n);
    if (p <= length) return CFRangeMake(p, static_cast<CFIndex>(length - p));
    return CFRangeMake(0, 0);
}

std::uint32_t String::FindWith(CFStringRef text, std::uint32_t start, CFStringCompareFlags options) const {
    CFRange found = {};
    if (!CFStringFindWithOptions(CFString(), text, Clamp(start, npos), options, &found)) return npos;
    return static_cast<std::uint32_t>(found.location);
}

int String::CompareRangeNoCase(CFRange range, CFStringRef other) const {
    return static_cast<int>(CFStringCompareWithOptions(CFString(), other, range, kCFCompareCaseInsensitive));
}

CFMutableStringRef String::MakeMutable() {
    if (mutable_ == nullptr) {
        mutable_ = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, immutable_);
        CFRelease(std::exchange(immutable_, nullptr));
    }
    return mutable_;
}

void String::Adopt(CFStringRef text) {
    CFRelease(CFString());
    mutable_ = nullptr;
    immutable_ = text != nullptr ? text : EmptyText();
}

}  // namespace ZEMA
