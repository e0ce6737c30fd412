#include "host/plugin/BundleLocation.h"

#include <filesystem>
#include <system_error>

#ifdef __APPLE__
#include <mach-o/dyld.h>

#include <climits>
#endif

namespace ZEMA {

namespace {

// The folder of the running program, links followed; empty when the system cannot tell.
std::filesystem::path ProgramFolder() {
    std::error_code error;
#ifdef __APPLE__
    char path[PATH_MAX];
    std::uint32_t size = sizeof(path);
    if (_NSGetExecutablePath(path, &size) != 0) return {};
    return std::filesystem::canonical(path, error).parent_path();
#else
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
#endif
}

bool IsFolder(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

}  // namespace

std::optional<std::string> FindBundle(const std::string& given, std::string& problem) {
    if (!given.empty()) {
        if (IsFolder(given)) return given;
        problem = given + ": there is no such bundle";
        return std::nullopt;
    }
    const std::filesystem::path prefix = ProgramFolder().parent_path();
    if (prefix.empty()) {  // never looks in the current folder: whoever can write there would run code here
        problem = "the system does not tell where this program lies; name a bundle with --bundle";
        return std::nullopt;
    }
    const std::filesystem::path bundle = prefix / "lib/wqf/WQFImporter.mdimporter";
    if (IsFolder(bundle)) return bundle.string();
    problem = "there is no bundle " + bundle.string() + "; name one with --bundle";
    return std::nullopt;
}

}  // namespace ZEMA
