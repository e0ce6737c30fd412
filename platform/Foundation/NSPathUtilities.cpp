#include "platform/Foundation/NSPathUtilities.h"

#include <algorithm>
#include <vector>

namespace Foundation {
namespace {

constexpr UniChar kSeparator = '/';

// Text being put together. Kept in units, not bytes, since half a surrogate pair is a character to these helpers.
using Units = std::vector<UniChar>;

Units UnitsOf(CFStringRef text) {
    Units units(static_cast<std::size_t>(CFStringGetLength(text)));
    CFStringGetCharacters(text, CFRangeMake(0, CFStringGetLength(text)), units.data());
    return units;
}

CFPointer<CFStringRef> StringOf(const UniChar* units, std::size_t count) {
    return CFPointer<CFStringRef>(
        CFStringCreateWithCharacters(kCFAllocatorDefault, units, static_cast<CFIndex>(count)));
}

CFPointer<CFStringRef> StringOf(const Units& units) {
    return StringOf(units.data(), units.size());
}

bool IsSeparatorAlone(const Units& units) {
    return units.size() == 1 && units.front() == kSeparator;
}

// Reduces repeated separators to one and drops one at the end, unless it is all there is.
void TidySeparators(Units& units) {
    const auto bothSeparators = [](UniChar a, UniChar b) { return a == kSeparator && b == kSeparator; };
    units.erase(std::unique(units.begin(), units.end(), bothSeparators), units.end());
    if (!units.empty() && units.back() == kSeparator && !IsSeparatorAlone(units)) units.pop_back();
}

// Puts a tidied component behind the path.
void AppendComponent(Units& path, const Units& component) {
    if (component.empty()) return;
    if (!path.empty() && path.back() != kSeparator) path.push_back(kSeparator);
    path.insert(path.end(), component.begin(), component.end());
}

}  // namespace

CFPointer<CFArrayRef> pathComponents(CFStringRef path) {
    CFPointer<CFMutableArrayRef> components(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    const auto append = [&](const UniChar* units, std::size_t count) {
        CFArrayAppendValue(components.Get(), StringOf(units, count).Get());
    };
    const Units units = UnitsOf(path);
    if (!units.empty() && units.front() == kSeparator) append(&kSeparator, 1);
    for (auto start = units.begin(); start != units.end();) {
        const auto end = std::find(start, units.end(), kSeparator);
        if (end != start) append(&*start, static_cast<std::size_t>(end - start));
        start = end == units.end() ? end : end + 1;
    }
    if (units.size() > 1 && units.back() == kSeparator) append(&kSeparator, 1);
    return CFPointer<CFArrayRef>(components.Take());
}

CFPointer<CFStringRef> stringByAppendingPathComponent(CFStringRef path, CFStringRef component) {
    Units units = UnitsOf(path);
    const Units last = UnitsOf(component);
    if (!units.empty() && !last.empty()) units.push_back(kSeparator);
    units.insert(units.end(), last.begin(), last.end());
    TidySeparators(units);
    return StringOf(units);
}

CFPointer<CFStringRef> pathWithComponents(CFArrayRef components) {
    Units path;
    for (CFIndex index = 0; index < CFArrayGetCount(components); ++index) {
        Units component = UnitsOf(static_cast<CFStringRef>(CFArrayGetValueAtIndex(components, index)));
        TidySeparators(component);
        AppendComponent(path, component);
    }
    return StringOf(path);
}

bool isAbsolutePath(CFStringRef path) {
    if (CFStringGetLength(path) == 0) return false;
    const UniChar first = CFStringGetCharacterAtIndex(path, 0);
    return first == kSeparator || first == '~';
}

std::optional<std::string> FileSystemRepresentation(CFStringRef path) {
    if (path == nullptr || CFStringGetLength(path) == 0) return {};
    const CFRange all = CFRangeMake(0, CFStringGetLength(path));
    constexpr std::size_t kRoomForUnit = 3;  // four bytes stand for two units
    std::string bytes(kRoomForUnit * static_cast<std::size_t>(all.length), '\0');
    CFIndex used = 0;
    const CFIndex converted =
        CFStringGetBytes(path, all, kCFStringEncodingUTF8, 0, false, reinterpret_cast<UInt8*>(bytes.data()),
                         static_cast<CFIndex>(bytes.size()), &used);
    if (converted != all.length) return {};
    bytes.resize(static_cast<std::size_t>(used));
    if (bytes.find('\0') != std::string::npos) return {};
    return bytes;
}

CFPointer<CFStringRef> StringWithFileSystemRepresentation(const std::string& bytes) {
    // Decoding takes one byte-order mark away; a name that starts with one gets another to lose.
    static constexpr const char* kMark = "\xEF\xBB\xBF";
    const std::string text = bytes.starts_with(kMark) ? kMark + bytes : bytes;
    return CFPointer<CFStringRef>(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false));
}

}  // namespace Foundation
