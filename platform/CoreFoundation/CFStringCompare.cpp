// Comparing, searching and splitting.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFString.h>
#include <utf8proc.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>

#include "platform/CoreFoundation/StringObject.h"

namespace ZEMA::CF {
namespace {

constexpr char32_t kEndOfText = 0xFFFFFFFF;

char32_t FoldAscii(char32_t codePoint) {
    return codePoint - U'A' < 26 ? codePoint + (U'a' - U'A') : codePoint;
}

// Hands out the full default case folding (statuses C and F) of a text, one code point after the other. An unpaired
// surrogate stands for itself, and so does everything above U+FFFF: the framework folds nothing there.
class FoldedReader {
public:
    explicit FoldedReader(TextView text) : text_(text) {}

    char32_t Next();  // kEndOfText at the end

    // Whether the code points of one character have all been handed out, and where the next character starts.
    bool IsBetweenCharacters() const { return nextPending_ == pendingCount_; }
    std::size_t Position() const { return position_; }

private:
    static constexpr std::size_t kMaximumExpansion = 3;  // of one code point

    TextView text_;
    std::size_t position_ = 0;
    std::size_t pendingCount_ = 0;
    std::size_t nextPending_ = 0;
    char32_t pending_[kMaximumExpansion] = {};
};

// The framework's tables are older than utf8proc's: these it leaves alone.
bool IsUnknownToTheFramework(char32_t codePoint) {
    if (codePoint >= 0x1C80 && codePoint <= 0x1C88) return true;
    return codePoint == 0x2C2F || codePoint == 0xA7C0 || codePoint == 0xA7D0 || codePoint == 0xA7D6 ||
           codePoint == 0xA7D8;
}

// Unicode folds Cherokee to its capitals, the framework to its small letters; only the order against other letters
// tells the difference. Gives 0 for other letters.
char32_t FoldCherokee(char32_t codePoint) {
    if (codePoint >= 0x13A0 && codePoint <= 0x13EF) return codePoint - 0x13A0 + 0xAB70;
    if (codePoint >= 0x13F0 && codePoint <= 0x13F5) return codePoint + 8;
    const bool isSmall = (codePoint >= 0xAB70 && codePoint <= 0xABBF) || (codePoint >= 0x13F8 && codePoint <= 0x13FD);
    return isSmall ? codePoint : 0;
}

std::size_t Fold(char32_t codePoint, char32_t (&folded)[3]) {
    folded[0] = codePoint;
    if (IsUnknownToTheFramework(codePoint)) return 1;
    if (const char32_t letter = FoldCherokee(codePoint)) {
        folded[0] = letter;
        return 1;
    }
    utf8proc_int32_t found[3];
    int boundClass = 0;
    const utf8proc_ssize_t count =
        utf8proc_decompose_char(static_cast<utf8proc_int32_t>(codePoint), found, 3, UTF8PROC_CASEFOLD, &boundClass);
    if (count < 1 || count > 3) return 1;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) folded[i] = static_cast<char32_t>(found[i]);
    return static_cast<std::size_t>(count);
}

char32_t FoldedReader::Next() {
    if (nextPending_ < pendingCount_) return pending_[nextPending_++];
    if (position_ == text_.Length()) return kEndOfText;
    const UniChar unit = text_[position_++];
    if (unit < 0x80) return FoldAscii(unit);
    if (IsHighSurrogate(unit) && position_ < text_.Length() && IsLowSurrogate(text_[position_])) {
        return PairToCodePoint(unit, text_[position_++]);
    }
    if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) return unit;
    pendingCount_ = Fold(unit, pending_);
    nextPending_ = 1;
    return pending_[0];
}

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

CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef allocator, CFStringRef text, CFStringRef separator) {
    const CFIndex length = CFStringGetLength(text);
    CFMutableArrayRef pieces = CFArrayCreateMutable(allocator, 0, &kCFTypeArrayCallBacks);
    Owned<__CFArray> owner(pieces);
    const auto append = [&](CFRange range) {
        const Owned<__CFString> piece(CFStringCreateWithSubstring(allocator, text, range));
        CFArrayAppendValue(pieces, piece.get());
    };
    CFIndex start = 0;
    CFRange found;
    while (CFStringFindWithOptions(text, separator, {start, length - start}, 0, &found)) {
        append({start, found.location - start});
        start = found.location + found.length;
    }
    append({start, length - start});
    return owner.release();
}
