#include "platform/Foundation/NSPathUtilities.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>
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

// What follows is for stringByStandardizingPath: in bytes where the disk is asked and in the text otherwise.

using Pieces = std::vector<std::string_view>;

// The home folder of a user, or of the process's own for an empty name; empty when there is none.
std::string HomeOf(const std::string& user) {
    if (user.empty()) {
        if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
    }
    std::vector<char> buffer(1 << 14);
    passwd entry = {};
    passwd* found = nullptr;
    if (user.empty()) {
        getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
    } else {
        getpwnam_r(user.c_str(), &entry, buffer.data(), buffer.size(), &found);
    }
    return found == nullptr || found->pw_dir == nullptr ? std::string() : found->pw_dir;
}

// "~" and "~user" in front become the home folder; a user who is not known stays as text.
std::string ExpandTilde(std::string path) {
    if (!path.starts_with('~')) return path;
    const std::size_t end = std::min(path.find('/'), path.size());
    const std::string home = HomeOf(path.substr(1, end - 1));
    return home.empty() ? path : home + path.substr(end);
}

// The components that change something. A "." in front of a relative path stays, so that the path never becomes empty.
Pieces Tidy(std::string_view path) {
    Pieces pieces;
    const bool absolute = path.starts_with('/');
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view piece = path.substr(0, end);
        const bool nothing = piece.empty() || (piece == "." && (absolute || !pieces.empty()));
        if (!nothing) pieces.push_back(piece);
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return pieces;
}

std::string Join(const Pieces& pieces, bool absolute) {
    std::string path = absolute ? "/" : "";
    for (const std::string_view piece : pieces) {
        if (!path.empty() && path.back() != '/') path += '/';
        path += piece;
    }
    return path;
}

// Resolves ".." in the text; at the root it stays there.
Pieces WithoutParents(const Pieces& pieces) {
    Pieces kept;
    for (const std::string_view piece : pieces) {
        if (piece != "..") {
            kept.push_back(piece);
        } else if (!kept.empty()) {
            kept.pop_back();
        }
    }
    return kept;
}

// The whole path through all its links; empty unless all of it exists.
std::string RealPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real == nullptr ? std::string() : real.get();
}

#ifdef __APPLE__
// These folders hold what is known by a shorter name too.
std::string WithoutPrivate(const std::string& path) {
    for (const std::string_view prefix : {"/private/var/automount", "/var/automount", "/private"}) {
        if (!path.starts_with(prefix) || path.size() == prefix.size() || path[prefix.size()] != '/') continue;
        std::string rest = path.substr(prefix.size());
        struct stat status = {};
        return stat(rest.c_str(), &status) == 0 ? rest : path;
    }
    return path;
}
#else
std::string WithoutPrivate(const std::string& path) {
    return path;
}
#endif

std::string Standardize(const std::string& given) {
    const std::string path = ExpandTilde(given);
    const bool absolute = path.starts_with('/');
    const Pieces pieces = Tidy(path);
    const std::string tidy = Join(pieces, absolute);
    if (!absolute) return tidy;
    if (std::find(pieces.begin(), pieces.end(), "..") == pieces.end()) return WithoutPrivate(tidy);
    const std::string real = RealPath(tidy);
    return WithoutPrivate(real.empty() ? Join(WithoutParents(pieces), true) : real);
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

CFPointer<CFStringRef> stringByStandardizingPath(CFStringRef path) {
    // A text that cannot name anything has nothing to standardise, and a result that is no text neither.
    const std::optional<std::string> bytes = FileSystemRepresentation(path);
    CFPointer<CFStringRef> standard;
    if (bytes) standard = StringWithFileSystemRepresentation(Standardize(*bytes));
    if (standard) return standard;
    return CFPointer<CFStringRef>(CFStringCreateCopy(kCFAllocatorDefault, path));
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
