#include "host/system/FileReading.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace ZEMA {

namespace {

class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (descriptor_ > STDERR_FILENO) close(descriptor_);
    }
    int Get() const { return descriptor_; }

private:
    int descriptor_;
};

std::string SystemError() {
    return std::strerror(errno);
}

const char* KindOf(mode_t mode) {
    switch (mode & S_IFMT) {
        case S_IFDIR:
            return "is a folder";
        case S_IFIFO:
            return "is a pipe, not a regular file";
        case S_IFSOCK:
            return "is a socket, not a regular file";
        case S_IFCHR:
        case S_IFBLK:
            return "is a device, not a regular file";
        default:
            return "is not a regular file";
    }
}

// The kind is looked at before opening, because opening can already wait or act (a pipe, a tape), and the opening does
// not wait either, because the kind may have changed in between.
int OpenRegular(const std::string& path, std::string& problem) {
    problem = WhyNoFile(path);
    if (!problem.empty()) return -1;
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) problem = SystemError();
    return descriptor;
}

// Stops behind `limit` bytes; the caller sees by the size that there is more.
std::optional<std::string> ReadAll(int descriptor, std::size_t limit, std::string& problem) {
    std::string bytes;
    std::array<char, 65536> part;
    while (bytes.size() <= limit) {
        const ssize_t count = read(descriptor, part.data(), part.size());
        if (count == 0) return bytes;
        if (count > 0) {
            bytes.append(part.data(), static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            problem = SystemError();
            return std::nullopt;
        }
    }
    problem = "is too large";
    return std::nullopt;
}

}  // namespace

std::string WhyNoFile(const std::string& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return SystemError();
    return S_ISREG(status.st_mode) ? std::string() : KindOf(status.st_mode);
}

bool LeadsIntoFile(const std::string& path) {
    struct stat status;
    for (std::size_t end = path.rfind('/'); end != std::string::npos && end != 0; end = path.rfind('/', end - 1)) {
        if (stat(path.substr(0, end).c_str(), &status) == 0) return S_ISREG(status.st_mode);
        if (errno != ENOTDIR) return false;
    }
    return false;
}

std::optional<std::string> ReadRegularFile(const std::string& path, std::size_t limit, std::string& problem) {
    const Descriptor file(OpenRegular(path, problem));
    if (file.Get() < 0) return std::nullopt;
    return ReadAll(file.Get(), limit, problem);
}

std::optional<std::string> ReadStream(const std::string& path, std::string& problem) {
    const Descriptor stream(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC));
    if (stream.Get() < 0) {
        problem = SystemError();
        return std::nullopt;
    }
    return ReadAll(stream.Get(), static_cast<std::size_t>(-2), problem);
}

std::string WhyUnreadable(const std::string& path) {
    std::string problem;
    const Descriptor file(OpenRegular(path, problem));
    return problem;
}

}  // namespace ZEMA
