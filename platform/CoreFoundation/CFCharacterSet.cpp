#include <CoreFoundation/CFCharacterSet.h>

#include <algorithm>
#include <bitset>
#include <memory>
#include <optional>
#include <vector>

#include "platform/CoreFoundation/StringObject.h"

// Nearly all sets are a few ASCII characters, which are then found without a search.
struct __CFCharacterSet : ZEMA::CF::Object {
    __CFCharacterSet() : Object(ZEMA::CF::Type::CharacterSet, 0) {}

    bool Contains(char32_t codePoint) const {
        return codePoint < ascii.size() ? ascii[codePoint] : std::ranges::binary_search(others, codePoint);
    }

    std::bitset<128> ascii;
    std::vector<char32_t> others;  // above ASCII, in order
};

namespace ZEMA::CF {
namespace {

void AddMembers(TextView members, __CFCharacterSet& set) {
    for (std::size_t position = 0; position < members.Length(); ++position) {
        const UniChar unit = members[position];
        const bool hasNext = position + 1 < members.Length();
        if (unit < set.ascii.size()) {
            set.ascii.set(unit);
        } else if (IsHighSurrogate(unit) && hasNext && IsLowSurrogate(members[position + 1])) {
            set.others.push_back(PairToCodePoint(unit, members[++position]));
        } else if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit)) {
            set.others.push_back(unit);
        }
    }
    std::ranges::sort(set.others);
}

// A surrogate takes the next unit with it, whether the two are a pair or not, as the framework does; so a search that
// starts inside a pair passes over the character behind it.
std::optional<CFRange> FindMember(TextView text, const __CFCharacterSet& set) {
    for (std::size_t position = 0; position < text.Length(); ++position) {
        const UniChar unit = text[position];
        if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit)) {
            if (set.Contains(unit)) return CFRange{static_cast<CFIndex>(position), 1};
            continue;
        }
        if (position + 1 == text.Length()) break;
        const UniChar next = text[position + 1];
        const bool isPair = IsHighSurrogate(unit) && IsLowSurrogate(next);
        if (isPair && set.Contains(PairToCodePoint(unit, next))) return CFRange{static_cast<CFIndex>(position), 2};
        ++position;
    }
    return std::nullopt;
}

void Destroy(const Object* object) noexcept {
    delete static_cast<const __CFCharacterSet*>(object);
}

}  // namespace

const Class kCharacterSetClass = {Destroy, nullptr, nullptr};

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

CFCharacterSetRef CFCharacterSetCreateWithCharactersInString(CFAllocatorRef, CFStringRef members) {
    auto set = std::make_unique<__CFCharacterSet>();
    AddMembers(ViewOf(members), *set);
    return set.release();
}

Boolean CFStringFindCharacterFromSet(CFStringRef text, CFCharacterSetRef set, CFRange range, CFStringCompareFlags,
                                     CFRange* result) {
    const std::optional<CFRange> found = FindMember(ViewOf(text, range), Checked(set, Type::CharacterSet));
    if (found && result) *result = {range.location + found->location, found->length};
    return found.has_value();
}
