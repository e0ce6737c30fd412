#include "host/workers/StuckFileSystems.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "core/Limits.h"

namespace ZEMA {

namespace {

// The list of mounts has blanks and backslashes in names as \040 and the like (proc(5)).
std::string Unescaped(const std::string& name) {
    std::string bytes;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] != '\\' || i + 3 >= name.size()) {
            bytes += name[i];
            continue;
        }
        bytes += static_cast<char>(std::strtol(name.substr(i + 1, 3).c_str(), nullptr, 8));
        i += 3;
    }
    return bytes;
}

bool IsBelow(const std::string& path, const std::string& folder) {
    return folder == "/" || (path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/'));
}

// The innermost mount around the path; "/" where the system has no such list.
std::string MountOf(const std::string& path) {
    std::string whole = path;
    if (!path.starts_with('/')) {
        const std::unique_ptr<char, decltype(&std::free)> folder(getcwd(nullptr, 0), std::free);
        if (folder) whole = std::string(folder.get()) + "/" + path;
    }
    whole = std::filesystem::path(whole).lexically_normal().string();
    std::string innermost = "/";
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream fields(line);
        std::string field;
        for (int skipped = 0; skipped < 5; ++skipped) fields >> field;
        const std::string folder = Unescaped(field);
        if (folder.size() > innermost.size() && IsBelow(whole, folder)) innermost = folder;
    }
    return innermost;
}

}  // namespace

void StuckFileSystems::Note(const std::string& path) {
    ++counts_[MountOf(path)];
}

void StuckFileSystems::Clear(const std::string& path) {
    if (!counts_.empty()) counts_.erase(MountOf(path));
}

bool StuckFileSystems::Holds(const std::string& path) const {
    if (counts_.empty()) return false;
    const auto found = counts_.find(MountOf(path));
    return found != counts_.end() && found->second >= kStuckDocuments;
}

}  // namespace ZEMA
