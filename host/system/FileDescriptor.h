// Files of the system by their descriptors: opening, reading and copying.
#pragma once

#include <fcntl.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "host/system/Failure.h"

namespace ZEMA {

// Closes its descriptor when it goes; -1 is none.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor();

    int Get() const { return descriptor_; }
    bool IsOpen() const { return descriptor_ >= 0; }
    int Release() { return std::exchange(descriptor_, -1); }  // the caller closes it

private:
    int descriptor_;
};

// Opens a regular file for one of O_RDONLY, O_WRONLY and O_RDWR, links followed. Anything else is refused at once:
// never opened, never waited for. A lease that somebody holds on the file is waited for.
Result<FileDescriptor> OpenRegularFile(const std::string& path, int mode = O_RDONLY);

// The bytes of a regular file of at most `limit` bytes.
Result<std::string> ReadRegularFile(const std::string& path, std::size_t limit);

// Everything up to the end of a file, pipe or device; "-" is standard input.
Result<std::string> ReadStream(const std::string& path);

// Each moves all the bytes; false with errno otherwise. A file that ends early is an input/output error.
[[nodiscard]] bool ReadAllAt(int descriptor, std::uint64_t offset, std::size_t size, void* buffer);
[[nodiscard]] bool WriteAllAt(int descriptor, std::uint64_t offset, std::size_t size, const void* buffer);
[[nodiscard]] bool WriteAll(int descriptor, std::string_view bytes);

// Copies bytes to a place in another file without bringing them into the program, and returns how many: all, fewer, or
// none where the system cannot do that between these two files.
std::uint64_t CopyInSystem(int from, std::uint64_t offset, int to, std::uint64_t target, std::uint64_t size);

}  // namespace ZEMA
