// Unicode text: names, paths, keys and everything that reaches the platform.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <string_view>

#include "core/AString.h"
#include "core/BasicArray.h"

namespace ZEMA {

// The byte forms that a String converts to and from; none carries a byte-order mark.
enum class TextEncoding : std::uint32_t { Utf8 = 0, Utf16BigEndian = 1, Utf16LittleEndian = 2 };

// Text held as a platform string; lengths and positions count UTF-16 units.
//
// A new or copied String holds an immutable platform string, which copies share; the first change replaces it by a
// mutable copy, and it stays mutable until it is cleared or assigned.
//
// A range (p, n) is (p, n) where it fits into the text, else (p, length - p) where p does, else the empty range at 0.
// Bytes taken as ASCII that hold one of 128 or more give the empty text.
//
// Errors:  conversions that fail give the empty text; scans answer false. Allocation failure is std::bad_alloc.
// Threads: a String belongs to one thread at a time.
class String {
public:
    String();
    String(const char* ascii);              // up to the terminator
    explicit String(const AString& ascii);  // up to the first zero byte
    explicit String(CFStringRef text);      // an immutable copy; null gives the empty text
    String(const String& other);
    String(String&& other) noexcept;  // leaves `other` empty
    String(const String& other, std::uint32_t p, std::uint32_t n);
    ~String();
    String& operator=(const String& other);
    String& operator=(String&& other) noexcept;

    void Assign(const String& other);
    void Assign(const AString& ascii);
    void Assign(const char* ascii);
    void AssignBytes(const char* ascii, std::uint32_t count);
    void Clear();

    std::uint32_t Length() const;
    bool IsEmpty() const { return Length() == 0; }
    // The platform string held now; it stays the String's own, and the next change may replace it.
    CFStringRef CFString() const;

    void Append(const String& other);
    void Append(const char* ascii);
    void AppendNumber(unsigned long number);  // decimal; 32 bits of it, as "%u" prints
    void Erase(std::uint32_t p, std::uint32_t n);

    // Exact: unit by unit.
    friend bool operator==(const String& a, const String& b) { return a.Compare(b) == 0; }
    friend bool operator<(const String& a, const String& b) { return a.Compare(b) < 0; }

    // Ignoring case: by Unicode case folding, without regard to any locale.
    bool LessNoCase(const String& other) const;
    int CompareNoCase(std::uint32_t p, std::uint32_t n, const String& other, std::uint32_t q, std::uint32_t m) const;
    bool EqualsNoCaseAt(std::uint32_t p, std::uint32_t n, const String& other) const;

    // Whether the unit at `index` is `unit`; an index of npos means the last one.
    bool CharAtIs(std::uint32_t index, UniChar unit) const;

    // Each gives the position of the first match at or after `start`, or npos.
    std::uint32_t Find(UniChar unit, std::uint32_t start = 0) const;
    std::uint32_t FindNoCase(const String& text, std::uint32_t start = 0) const;
    std::uint32_t FindFirstOf(const String& set, std::uint32_t start = 0) const;

    // Replaces `pieces` by the texts between separators, empty ones included. The empty text has no pieces, and a text
    // that is the separator alone has one empty piece.
    void Split(UniChar separator, BasicArray<String>& pieces) const;
    void Split(const String& separator, BasicArray<String>& pieces) const;

    // Scans read at `position` and move it behind what they read. A failed scan leaves `value` alone, except that
    // scanning a boolean from the empty text sets it to false; it may have moved the position, except for a boolean.

    // "0", "1", "no", "yes", "false" or "true" in any case; what follows is not looked at.
    bool ScanBool(bool& value, std::uint32_t& position) const;
    // As the platform's number formatter reads: blanks, '-', digits with '.', an exponent. No '+'.
    bool ScanFloat(float& value, std::uint32_t& position) const;
    // Skips everything before the first sign or digit. A negative number fails.
    bool ScanUInt64(std::uint64_t& value, std::uint32_t& position) const;
    bool ScanUInt32(std::uint32_t& value, std::uint32_t& position) const;

    // The range as a platform string that the caller releases.
    CFStringRef CreateCFString(std::uint32_t p = 0, std::uint32_t n = npos) const;
    // The range as bytes; the empty text where it cannot be encoded.
    AString ToAString(TextEncoding encoding = TextEncoding::Utf8, std::uint32_t p = 0, std::uint32_t n = npos) const;
    // `count` counts bytes for UTF-8 and 16-bit units for UTF-16; one zero unit at the end is left out.
    void FromBytes(TextEncoding encoding, const void* bytes, std::uint32_t count);

    void Swap(String& other) noexcept;

private:
    int Compare(const String& other) const;
    int CompareRangeNoCase(CFRange range, CFStringRef other) const;
    std::uint32_t FindWith(CFStringRef text, std::uint32_t start, CFStringCompareFlags options) const;
    CFRange Clamp(std::uint32_t p, std::uint32_t n) const;
    CFMutableStringRef MakeMutable();
    void Adopt(CFStringRef text);  // takes over the caller's reference; null is the empty text

    // Exactly one of the two is set.
    CFStringRef immutable_;
    CFMutableStringRef mutable_ = nullptr;
};

// UTF-8 bytes, at most 2^32 - 1 of them, as FromBytes decodes them.
String FromUtf8(std::string_view bytes);

}  // namespace ZEMA
