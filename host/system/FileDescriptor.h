// Files of the system by their descriptors.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

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

private:
    int descriptor_;
};

// What the system says of an errno value, as it reads at the end of a message.
std::string SystemError(int error);

// Opens a regular file for reading and never waits for anything else. Not open, with a `problem`, where that fails.
FileDescriptor OpenRegularFile(const std::string& path, std::string& problem);

// Each moves all the bytes; false with errno otherwise. A file that ends early is an input/output error.
bool ReadAllAt(int descriptor, std::uint64_t offset, std::size_t size, void* buffer);
bool WriteAllAt(int descriptor, std::uint64_t offset, std::size_t size, const void* buffer);

// Copies as much of a file as the system can do by itself, and returns how much. The next read goes on behind it.
std::uint64_t CopyStart(int from, int to);

// Copies a range to the same place in another file, inside the system where it can do that.
bool CopyRange(int from, int to, std::uint64_t offset, std::uint64_t size);

}  // namespace ZEMA
