#include "host/documents/PathList.h"

#include <algorithm>

#include "host/system/FileReading.h"

namespace ZEMA {

std::optional<std::vector<std::string>> ReadPathList(const std::string& file, std::string& problem) {
    const std::optional<std::string> bytes = ReadStream(file, problem);
    if (!bytes) return std::nullopt;
    std::vector<std::string> paths;
    for (std::size_t start = 0; start < bytes->size();) {
        const std::size_t end = std::min(bytes->find('\0', start), bytes->size());
        paths.push_back(bytes->substr(start, end - start));
        start = end + 1;
    }
    return paths;
}

}  // namespace ZEMA
