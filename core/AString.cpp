#include "core/AString.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

#include "core/Exception.h"

namespace ZEMA {
namespace {

// The longest text: one byte more and its length would be npos.
constexpr std::uint32_t kMaximumLength = npos - 1;

std::uint32_t LengthOf(const char* text) {
    const std::size_t length = text == nullptr ? 0 : std::strlen(text);
    if (length > kMaximumLength) RangeException::Throw();
    return static_cast<std::uint32_t>(length);
}

// How much of a range (p, n) lies in a text of `length` bytes.
std::uint32_t Clamp(std::uint32_t length, std::uint32_t p, std::uint32_t n) {
    return p > length ? 0 : std::min(n, length - p);
}

}  // namespace

AString::AString(const char* text) : AString(text, LengthOf(text)) {}

AString::AString(const char* bytes, std::uint32_t count, MemoryBlocks* blocks) {
    if (count == 0) return;
    characters_ = Allocate(count, blocks);
    std::memcpy(characters_, bytes, count);
    SetLength(count);
}

char* AString::Allocate(std::uint32_t capacity, MemoryBlocks* blocks) {
    if (capacity > kMaximumLength) RangeException::Throw();
    const std::uint32_t size = (capacity + 1) | 32;  // of the characters with their terminator
    void* const block = MemoryBlocks::Allocate(sizeof(Header) + std::size_t{size}, blocks);
    new (block) Header{0, size - 1, 0};
    char* const characters = static_cast<char*>(block) + sizeof(Header);
    characters[0] = 0;
    return characters;
}

void AString::MoveTo(std::uint32_t capacity) {
    char* const characters = Allocate(capacity);
    const std::uint32_t kept = std::min(capacity, Length());
    std::memcpy(characters, Data(), kept);
    Release();
    characters_ = characters;
    SetLength(kept);
}

void AString::SetLength(std::uint32_t length) {
    HeaderOf(characters_)->length = length;
    characters_[length] = 0;
}

bool AString::Reserve(std::uint32_t capacity, bool discard) {
    if (capacity == 0) {
        Release();
        return false;
    }
    const bool shared = ShareCount() > 0;
    if (!shared && Capacity() >= capacity) return true;
    if (discard) {
        Release();
        characters_ = Allocate(capacity);
    } else if (shared) {
        MoveTo(capacity);
    } else {
        const std::uint32_t doubled = Capacity() > kMaximumLength / 2 ? kMaximumLength : 2 * Capacity();
        MoveTo(std::max(doubled, capacity));
    }
    return true;
}

char* AString::ResizeForOverwrite(std::uint32_t length) {
    if (!Reserve(length, true)) return nullptr;
    SetLength(length);
    return characters_;
}

void AString::Assign(const AString& other, std::uint32_t p, std::uint32_t n) {
    const std::uint32_t count = Clamp(other.Length(), p, n);
    if (count == 0) {
        Release();
    } else if (count == other.Length()) {
        *this = other;
    } else if (this == &other) {
        Erase(p + count);
        Erase(0, p);
    } else {
        std::memcpy(ResizeForOverwrite(count), other.Data() + p, count);
    }
}

void AString::Assign(const char* bytes, std::uint32_t count) {
    if (Holds(bytes)) {
        Assign(*this, static_cast<std::uint32_t>(bytes - characters_), count);
    } else if (char* const characters = ResizeForOverwrite(count)) {
        std::memcpy(characters, bytes, count);
    }
}

void AString::Append(const AString& other, std::uint32_t p, std::uint32_t n) {
    const std::uint32_t count = Clamp(other.Length(), p, n);
    if (count > 0) Append(other.Data() + p, count);
}

void AString::Append(const char* bytes, std::uint32_t count) {
    if (count == 0) return;
    const std::uint32_t length = Length();
    if (count >= npos - length) RangeException::Throw();
    const bool own = Holds(bytes);
    const std::ptrdiff_t offset = own ? bytes - characters_ : 0;
    Reserve(length + count);
    std::memcpy(characters_ + length, own ? characters_ + offset : bytes, count);
    SetLength(length + count);
}

void AString::Erase(std::uint32_t p, std::uint32_t n) {
    const std::uint32_t length = Length();
    const std::uint32_t count = Clamp(length, p, n);
    if (count == 0) return;
    Reserve(length);
    std::memmove(characters_ + p, characters_ + p + count, length - p - count);
    SetLength(length - count);
}

bool AString::Holds(const char* bytes) const {
    // The standard order of unrelated pointers is total, which `<` alone does not promise.
    const std::less<const char*> before;
    return characters_ != nullptr && !before(bytes, characters_) && before(bytes, characters_ + Length());
}

}  // namespace ZEMA
