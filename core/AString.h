// 8-bit text: file contents and XML text.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>

#include "core/ByteText.h"
#include "core/MemoryBlocks.h"

namespace ZEMA {

// "No position" in results, "up to the end" in counts. Lengths and positions of both text classes are 32 bits wide.
inline constexpr std::uint32_t npos = 0xFFFFFFFF;

// Bytes in a buffer that copies share until one of them changes; always followed by a zero byte. No encoding is
// assumed.
//
// A range (p, n) is clamped to the text: what lies behind its end is left out, and a p behind its end is the empty
// range.
//
// Errors:  an append that would make the length reach 2^32 - 1 throws RangeException* and changes nothing; allocation
//          failure is std::bad_alloc.
// Threads: a buffer shared by copies stays on one thread, since its share count is plain arithmetic.
class AString {
public:
    AString() = default;
    AString(const char* text);  // up to the terminator; null is the empty text
    AString(const char* bytes, std::uint32_t count, MemoryBlocks* blocks = nullptr);
    AString(const AString& other) noexcept : characters_(other.characters_) {
        if (characters_ != nullptr) ++HeaderOf(characters_)->shareCount;
    }
    AString(AString&& other) noexcept : characters_(std::exchange(other.characters_, nullptr)) {}
    ~AString() { Release(); }
    AString& operator=(const AString& other) noexcept {
        AString(other).Swap(*this);
        return *this;
    }
    AString& operator=(AString&& other) noexcept {
        AString(std::move(other)).Swap(*this);
        return *this;
    }

    std::uint32_t Length() const { return characters_ == nullptr ? 0 : HeaderOf(characters_)->length; }
    bool IsEmpty() const { return Length() == 0; }
    // The characters and a zero byte behind them; never null.
    const char* Data() const { return characters_ == nullptr ? "" : characters_; }
    std::string_view View() const { return {Data(), Length()}; }

    // Bytes of text that the buffer can hold without growing.
    std::uint32_t Capacity() const { return characters_ == nullptr ? 0 : HeaderOf(characters_)->capacity; }
    // How many further owners share the buffer.
    std::uint32_t ShareCount() const { return characters_ == nullptr ? 0 : HeaderOf(characters_)->shareCount; }

    // Makes the buffer private, with room for `capacity` bytes. With `discard` the text need not survive. A private
    // buffer grows to twice its capacity at least; a shared text is copied into a buffer of that capacity, and cut to
    // it. A capacity of 0 gives the buffer up, and is the one case that answers false; 2^32 - 1 throws RangeException*.
    bool Reserve(std::uint32_t capacity, bool discard = false);

    // Makes the text private and `length` bytes long and hands its bytes out to be filled; what they hold is not
    // defined. For readers that know the length beforehand, so that no text is copied twice. Null for a length of 0; a
    // length of 2^32 - 1 throws RangeException*.
    char* ResizeForOverwrite(std::uint32_t length);

    // The range of `other`, which may be this text. The whole of another text is shared, not copied.
    void Assign(const AString& other, std::uint32_t p = 0, std::uint32_t n = npos);
    void Assign(const char* bytes, std::uint32_t count);  // the bytes may be this text's own

    void Append(const AString& other, std::uint32_t p = 0, std::uint32_t n = npos);
    void Append(const char* bytes, std::uint32_t count);  // the bytes may be this text's own

    void Erase(std::uint32_t p = 0, std::uint32_t n = npos);
    void Clear() { Reserve(0); }

    void Swap(AString& other) noexcept { std::swap(characters_, other.characters_); }

    friend bool operator==(const AString& a, const AString& b) {
        return a.characters_ == b.characters_ || SameBytes(a.View(), b.View());
    }
    friend bool operator==(const AString& a, std::string_view b) { return SameBytes(a.View(), b); }
    friend bool operator==(const AString& a, const char* b) { return a.View() == b; }
    friend bool operator<(const AString& a, const AString& b) { return a.View() < b.View(); }

private:
    // Stands just before the characters.
    struct Header {
        std::uint32_t shareCount;
        std::uint32_t capacity;
        std::uint32_t length;
    };

    static Header* HeaderOf(char* characters) { return static_cast<Header*>(static_cast<void*>(characters)) - 1; }

    static char* Allocate(std::uint32_t capacity, MemoryBlocks* blocks = nullptr);  // an empty text
    void Release() noexcept {
        if (characters_ == nullptr) return;
        Header* const header = HeaderOf(std::exchange(characters_, nullptr));
        if (header->shareCount == 0) {
            MemoryBlocks::Free(header);
        } else {
            --header->shareCount;
        }
    }
    void MoveTo(std::uint32_t capacity);
    void SetLength(std::uint32_t length);
    bool Holds(const char* bytes) const;  // whether they start inside this text

    char* characters_ = nullptr;  // null is the empty text
};

}  // namespace ZEMA
