#include "host/system/Paths.h"

#include <filesystem>
#include <system_error>

namespace ZEMA {

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string NameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);  // npos + 1 is 0
}

std::string RealPath(const std::string& path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::weakly_canonical(path, error);
    return error ? path : real.string();
}

}  // namespace ZEMA
