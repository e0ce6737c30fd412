// Comparing and searching.
#include <CoreFoundation/CFCharacterSet.h>
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>

#include "platform/CoreFoundation/CaseFolding.h"
#include "platform/CoreFoundation/CharacterSetObject.h"
#include "platform/CoreFoundation/StringObject.h"

namespace ZEMA::CF {
namespace {

template <class Number>
CFComparisonResult Order(Number left, Number right) {
    return left < right ? kCFCompareLessThan : left > right ? kCFCompareGreaterThan : kCFCompareEqualTo;
}

CFComparisonResult CompareExactly(TextView left, TextView right) {
    if (!left.IsWide() && !right.IsWide()) {
        const std::size_t common = std::min(left.Length(), right.Length());
        const int order = common == 0 ? 0 : std::memcmp(left.Narrow().data(), right.Narrow().data(), common);
        if (order != 0) return order < 0 ? kCFCompareLessThan : kCFCompareGreaterThan;
        return Order(left.Length(), right.Length());
    }
    return left.Visit([&](auto leftUnits) {
        return right.Visit([&](auto rightUnits) {
            const auto [leftEnd, rightEnd] = std::ranges::mismatch(leftUnits, rightUnits);
            if (leftEnd == leftUnits.end() || rightEnd == rightUnits.end()) {
                return Order(leftUnits.size(), rightUnits.size());
            }
            return Order(static_cast<UniChar>(*leftEnd), static_cast<UniChar>(*rightEnd));
        });
    });
}

char32_t Folded(char unit) {
    return FoldAscii(static_cast<UInt8>(unit));
}

CFComparisonResult CompareFoldedAscii(std::span<const char> left, std::span<const char> right) {
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (left[i] == right[i] || Folded(left[i]) == Folded(right[i])) continue;
        return Order(Folded(left[i]), Folded(right[i]));
    }
    return Order(left.size(), right.size());
}

CFComparisonResult CompareFolded(TextView left, TextView right) {
    if (!left.IsWide() && !right.IsWide()) return CompareFoldedAscii(left.Narrow(), right.Narrow());
    FoldedReader leftReader(left);
    FoldedReader rightReader(right);
    while (true) {
        const char32_t leftPoint = leftReader.Next();
        const char32_t rightPoint = rightReader.Next();
        if (leftPoint == rightPoint && leftPoint != kEndOfText) continue;
        if (leftPoint == kEndOfText) return Order(0, rightPoint == kEndOfText ? 0 : 1);
        return rightPoint == kEndOfText ? kCFCompareGreaterThan : Order(leftPoint, rightPoint);
    }
}

// Positions are relative to the text searched.
using Match = std::optional<CFRange>;

Match MatchAt(std::size_t location, std::size_t length) {
    return CFRange{static_cast<CFIndex>(location), static_cast<CFIndex>(length)};
}

Match FindExactly(TextView text, TextView needle) {
    if (!text.IsWide() && !needle.IsWide()) {
        const std::string_view units(text.Narrow().data(), text.Length());
        const std::size_t found = units.find(std::string_view(needle.Narrow().data(), needle.Length()));
        return found == std::string_view::npos ? Match() : MatchAt(found, needle.Length());
    }
    return text.Visit([&](auto textUnits) {
        return needle.Visit([&](auto needleUnits) {
            const auto found = std::search(textUnits.begin(), textUnits.end(), needleUnits.begin(), needleUnits.end());
            if (found == textUnits.end()) return Match();
            return MatchAt(static_cast<std::size_t>(found - textUnits.begin()), needleUnits.size());
        });
    });
}

// How many units at the front of the text are the needle in another case; they must end where a character ends.
std::optional<std::size_t> FoldedPrefix(TextView text, TextView needle) {
    FoldedReader textReader(text);
    FoldedReader needleReader(needle);
    while (true) {
        const std::size_t textPosition = textReader.Position();
        const char32_t wanted = needleReader.Next();
        if (wanted == kEndOfText) {
            return textReader.IsBetweenCharacters() ? std::optional(textReader.Position()) : std::nullopt;
        }
        if (textReader.Next() == wanted) continue;
        // The framework lets a needle that ends in half a pair end inside a pair of the text.
        const bool isLast = needleReader.Position() == needle.Length();
        if (isLast && wanted <= 0xFFFF && IsHighSurrogate(static_cast<UniChar>(wanted)) &&
            textPosition < text.Length() && text[textPosition] == wanted) {
            return textPosition + 1;
        }
        return std::nullopt;
    }
}

Match FindFoldedAscii(std::span<const char> text, std::span<const char> needle) {
    const auto found = std::search(text.begin(), text.end(), needle.begin(), needle.end(),
                                   [](char unit1, char unit2) { return Folded(unit1) == Folded(unit2); });
    if (found == text.end()) return Match();
    return MatchAt(static_cast<std::size_t>(found - text.begin()), needle.size());
}

Match FindFolded(TextView text, TextView needle) {
    if (!text.IsWide() && !needle.IsWide()) return FindFoldedAscii(text.Narrow(), needle.Narrow());
    for (std::size_t start = 0; start < text.Length(); ++start) {
        if (const auto length = FoldedPrefix(text.Part(start, text.Length() - start), needle)) {
            return MatchAt(start, *length);
        }
    }
    return Match();
}

// A surrogate takes the next unit with it, whether the two are a pair or not, as the framework does; so a search that
// starts inside a pair passes over the character behind it.
Match FindMember(TextView text, const __CFCharacterSet& set) {
    for (std::size_t position = 0; position < text.Length(); ++position) {
        const UniChar unit = text[position];
        if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit)) {
            if (set.Contains(unit)) return MatchAt(position, 1);
            continue;
        }
        if (position + 1 == text.Length()) break;
        const UniChar next = text[position + 1];
        const bool isPair = IsHighSurrogate(unit) && IsLowSurrogate(next);
        if (isPair && set.Contains(PairToCodePoint(unit, next))) return MatchAt(position, 2);
        ++position;
    }
    return Match();
}

Boolean Report(const Match& match, CFRange range, CFRange* result) {
    if (match && result) *result = {range.location + match->location, match->length};
    return match.has_value();
}

}  // namespace
}  // namespace ZEMA::CF

using namespace ZEMA::CF;

CFComparisonResult CFStringCompare(CFStringRef text1, CFStringRef text2, CFStringCompareFlags options) {
    const TextView left = ViewOf(text1);
    const TextView right = ViewOf(text2);
    return options & kCFCompareCaseInsensitive ? CompareFolded(left, right) : CompareExactly(left, right);
}

CFComparisonResult CFStringCompareWithOptions(CFStringRef text1, CFStringRef text2, CFRange range1,
                                              CFStringCompareFlags options) {
    const TextView left = ViewOf(text1, range1);
    const TextView right = ViewOf(text2);
    return options & kCFCompareCaseInsensitive ? CompareFolded(left, right) : CompareExactly(left, right);
}

Boolean CFStringFindWithOptions(CFStringRef text, CFStringRef needle, CFRange range, CFStringCompareFlags options,
                                CFRange* result) {
    const TextView part = ViewOf(text, range);
    const TextView wanted = ViewOf(needle);
    if (wanted.Length() == 0 || part.Length() == 0) return false;
    const bool isFolded = options & kCFCompareCaseInsensitive;
    return Report(isFolded ? FindFolded(part, wanted) : FindExactly(part, wanted), range, result);
}

Boolean CFStringFindCharacterFromSet(CFStringRef text, CFCharacterSetRef set, CFRange range, CFStringCompareFlags,
                                     CFRange* result) {
    return Report(FindMember(ViewOf(text, range), Checked(set, Type::CharacterSet)), range, result);
}
