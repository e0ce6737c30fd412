#include "host/archive/ExtendedAttributes.h"

#include <sys/stat.h>

#ifdef __linux__
#include <sys/xattr.h>

#include <cstddef>
#include <vector>
#endif

namespace ZEMA {

#ifdef __linux__

namespace {

// What `read` puts into a buffer, after it was asked how much that is; empty where it fails or is empty.
template <class Read>
std::vector<char> Bytes(Read read) {
    const ssize_t size = read(nullptr, 0);
    if (size <= 0) return {};
    std::vector<char> bytes(static_cast<std::size_t>(size));
    const ssize_t count = read(bytes.data(), bytes.size());
    bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return bytes;
}

}  // namespace

bool CopyExtendedAttributes(const std::string& from, int to) {
    const char* const path = from.c_str();
    fremovexattr(to, "system.posix_acl_access");
    const std::vector<char> names =
        Bytes([path](char* buffer, std::size_t size) { return listxattr(path, buffer, size); });
    bool complete = true;
    for (std::size_t begin = 0; begin < names.size();) {
        const std::string name(&names[begin]);  // each ends in a zero byte
        begin += name.size() + 1;
        const std::vector<char> value =
            Bytes([&](char* buffer, std::size_t size) { return getxattr(path, name.c_str(), buffer, size); });
        const bool given = fsetxattr(to, name.c_str(), value.data(), value.size(), 0) == 0;
        complete = complete && (given || name.starts_with("security."));
    }
    return complete;
}

#else

bool CopyExtendedAttributes(const std::string&, int) {
    return true;
}

#endif

mode_t CurrentUmask() {
    const mode_t mask = umask(0);  // it can only be asked for by setting it
    umask(mask);
    return mask;
}

}  // namespace ZEMA
