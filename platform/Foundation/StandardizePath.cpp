// stringByStandardizingPath, in bytes where the disk is asked and in the text otherwise.
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Foundation/NSPathUtilities.h"

namespace Foundation {
namespace {

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

CFPointer<CFStringRef> stringByStandardizingPath(CFStringRef path) {
    // A text that cannot name anything has nothing to standardise, and a result that is no text neither.
    const std::optional<std::string> bytes = FileSystemRepresentation(path);
    CFPointer<CFStringRef> standard;
    if (bytes) standard = StringWithFileSystemRepresentation(Standardize(*bytes));
    if (standard) return standard;
    return CFPointer<CFStringRef>(CFStringCreateCopy(kCFAllocatorDefault, path));
}

}  // namespace Foundation
