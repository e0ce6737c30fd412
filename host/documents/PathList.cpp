#include "host/documents/PathList.h"

#include <algorithm>

#include "host/system/FileDescriptor.h"

namespace ZEMA {

Result<std::vector<std::string>> ReadPathList(const std::string& file) {
    const Result<std::string> bytes = ReadStream(file);
    if (!bytes) return bytes.Why();
    std::vector<std::string> paths;
    for (std::size_t start = 0; start < bytes->size();) {
        const std::size_t end = std::min(bytes->find('\0', start), bytes->size());
        paths.push_back(bytes->substr(start, end - start));
        start = end + 1;
    }
    return paths;
}

}  // namespace ZEMA
