#include "host/system/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <memory>

#include "host/system/FileReading.h"

namespace ZEMA {

namespace {

constexpr std::size_t kCopyBufferSize = 1 << 20;
constexpr std::uint64_t kMostAtOnce = 1 << 30;

// The system writes "Permission denied"; all our reasons stand in the middle of a line.
std::string InLowerCase(std::string text) {
    if (!text.empty()) text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return text;
}

// How far the system copied by itself; it may not know how, between these two files.
std::uint64_t CopyInSystem(int from, int to, std::uint64_t offset, std::uint64_t size) {
    std::uint64_t done = 0;
#ifdef __linux__
    while (done < size) {
        auto in = static_cast<off_t>(offset + done);
        off_t out = in;
        const auto part = static_cast<std::size_t>(std::min(size - done, kMostAtOnce));
        const ssize_t count = copy_file_range(from, &in, to, &out, part, 0);
        if (count <= 0) break;
        done += static_cast<std::uint64_t>(count);
    }
#else
    static_cast<void>(from), static_cast<void>(to), static_cast<void>(offset), static_cast<void>(size);
#endif
    return done;
}

}  // namespace

FileDescriptor::~FileDescriptor() {
    if (descriptor_ >= 0) close(descriptor_);
}

std::string SystemError(int error) {
    return error == ENOENT ? "no such file" : InLowerCase(std::strerror(error));
}

FileDescriptor OpenRegularFile(const std::string& path, std::string& problem) {
    // What waits or acts when it is opened is found out before; the kind may change until then, so nothing waits.
    problem = InLowerCase(WhyNoFile(path));
    if (!problem.empty()) return FileDescriptor();
    FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.IsOpen()) problem = SystemError(errno);
    return file;
}

bool ReadAllAt(int descriptor, std::uint64_t offset, std::size_t size, void* buffer) {
    auto* next = static_cast<char*>(buffer);
    while (size > 0) {
        const ssize_t count = pread(descriptor, next, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) continue;
        if (count == 0) errno = EIO;
        if (count <= 0) return false;
        next += count;
        offset += static_cast<std::uint64_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool WriteAllAt(int descriptor, std::uint64_t offset, std::size_t size, const void* buffer) {
    const auto* next = static_cast<const char*>(buffer);
    while (size > 0) {
        const ssize_t count = pwrite(descriptor, next, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        next += count;
        offset += static_cast<std::uint64_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

std::uint64_t CopyStart(int from, int to) {
    const std::uint64_t done = CopyInSystem(from, to, 0, UINT64_MAX);
    return lseek(from, static_cast<off_t>(done), SEEK_SET) < 0 ? 0 : done;
}

bool CopyRange(int from, int to, std::uint64_t offset, std::uint64_t size) {
    const std::uint64_t done = CopyInSystem(from, to, offset, size);
    if (done == size) return true;
    const std::unique_ptr<char[]> buffer(new char[kCopyBufferSize]);
    for (offset += done, size -= done; size > 0;) {
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(size, kCopyBufferSize));
        if (!ReadAllAt(from, offset, part, buffer.get()) || !WriteAllAt(to, offset, part, buffer.get())) return false;
        offset += part;
        size -= part;
    }
    return true;
}

}  // namespace ZEMA
