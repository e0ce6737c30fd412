#include "host/system/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <limits>

#include "host/system/Paths.h"
#include "platform/Foundation/RegularFile.h"
#include "platform/Foundation/Uninterrupted.h"

namespace ZEMA {

namespace {

using Foundation::Uninterrupted;

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max() - 1;

// Stops behind `limit` bytes; only then it is known that there is more.
Result<std::string> ReadToEnd(int descriptor, std::size_t limit) {
    std::string bytes;
    std::array<char, 65536> part;
    while (bytes.size() <= limit) {
        const ssize_t count = Uninterrupted([&] { return read(descriptor, part.data(), part.size()); });
        if (count < 0) return SystemFailure(errno);
        if (count == 0) return bytes;
        bytes.append(part.data(), static_cast<std::size_t>(count));
    }
    return Failure{FailureKind::Limit, "is too large"};
}

}  // namespace

FileDescriptor::~FileDescriptor() {
    if (descriptor_ >= 0) close(descriptor_);
}

Result<FileDescriptor> OpenRegularFile(const std::string& path, int mode) {
    FileDescriptor file(Foundation::OpenRegularFile(path, mode));
    if (file.IsOpen()) return file;
    const int error = errno;
    if (Failure failure = CheckRegularFile(path)) return failure;  // says what it is instead
    return SystemFailure(error);
}

Result<std::string> ReadRegularFile(const std::string& path, std::size_t limit) {
    const Result<FileDescriptor> file = OpenRegularFile(path);
    if (!file) return file.Why();
    return ReadToEnd(file->Get(), limit);
}

Result<std::string> ReadStream(const std::string& path) {
    if (path == "-") return ReadToEnd(STDIN_FILENO, kNoLimit);
    const FileDescriptor stream(Uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC); }));
    if (!stream.IsOpen()) return SystemFailure(errno);
    return ReadToEnd(stream.Get(), kNoLimit);
}

bool ReadAllAt(int descriptor, std::uint64_t offset, std::size_t size, void* buffer) {
    auto* next = static_cast<char*>(buffer);
    while (size > 0) {
        const ssize_t count = Uninterrupted([&] { return pread(descriptor, next, size, static_cast<off_t>(offset)); });
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
        const ssize_t count = Uninterrupted([&] { return pwrite(descriptor, next, size, static_cast<off_t>(offset)); });
        if (count < 0) return false;
        next += count;
        offset += static_cast<std::uint64_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = Uninterrupted([&] { return write(descriptor, bytes.data(), bytes.size()); });
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

std::uint64_t CopyInSystem(int from, std::uint64_t offset, int to, std::uint64_t target, std::uint64_t size) {
#ifdef __linux__
    auto in = static_cast<off_t>(offset);
    auto out = static_cast<off_t>(target);
    const ssize_t count =
        Uninterrupted([&] { return copy_file_range(from, &in, to, &out, static_cast<std::size_t>(size), 0); });
    return count < 0 ? 0 : static_cast<std::uint64_t>(count);
#else
    static_cast<void>(from), static_cast<void>(offset), static_cast<void>(to), static_cast<void>(target);
    static_cast<void>(size);
    return 0;
#endif
}

}  // namespace ZEMA
