// Reading and writing one regular file through a descriptor, and the exception that this raises.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "platform/Foundation/NSObjCRuntime.h"

namespace Foundation {

// The name of what a file handle raises.
inline constexpr const char* NSFileHandleOperationException = "NSFileHandleOperationException";

// Thrown by value and caught by reference; the name tells the kind, the reason is for people.
class FOUNDATION_EXPORT NSException : public std::exception {
public:
    // `name` is one of the constant names above.
    NSException(const char* name, std::string reason);
    ~NSException() override;

    const char* name() const { return name_; }
    const std::string& reason() const { return reason_; }
    const char* what() const noexcept override { return reason_.c_str(); }

private:
    const char* name_;
    std::string reason_;
};

using NSData = std::vector<std::uint8_t>;

// An open regular file with a position that starts at 0; offsets and lengths are bytes in 64 bits.
//
// Opening creates and cuts nothing, and waits for nothing but a lease: null for a missing item, for one that may not be
// opened in that way, and for whatever is no regular file (a directory, pipe, socket or device), which is not even
// opened.
//
// Errors:    operations that fail, and all of them on a closed handle except fileDescriptor, raise NSException named
//            NSFileHandleOperationException. Interrupted and short transfers are carried on with.
// Ownership: the caller owns the handle, and the handle its descriptor.
// Threads:   one at a time.
class FOUNDATION_EXPORT NSFileHandle {
public:
    static std::unique_ptr<NSFileHandle> fileHandleForReadingAtPath(CFStringRef path);
    static std::unique_ptr<NSFileHandle> fileHandleForWritingAtPath(CFStringRef path);
    static std::unique_ptr<NSFileHandle> fileHandleForUpdatingAtPath(CFStringRef path);

    NSFileHandle(const NSFileHandle&) = delete;
    NSFileHandle& operator=(const NSFileHandle&) = delete;
    ~NSFileHandle();  // closes what is still open

    int fileDescriptor() const { return descriptor_; }  // -1 once closed

    // Up to `length` bytes from the position on: fewer at the end of the file, none behind it.
    NSData readDataOfLength(std::uint64_t length);
    // The same straight into the caller's memory. Returns the bytes read; `*done`, where not null, counts along and so
    // tells, when this raises, what had been read.
    std::uint64_t readBytes(void* buffer, std::uint64_t length, std::uint64_t* done = nullptr);

    // At the position, which moves; a gap behind the end reads as zeros.
    void writeData(const void* bytes, std::uint64_t length);

    // Cuts the file or extends it with zeros, and moves the position to the offset.
    void truncateFileAtOffset(std::uint64_t offset);
    void seekToFileOffset(std::uint64_t offset);  // also behind the end
    std::uint64_t offsetInFile() const;

    void closeFile();

private:
    explicit NSFileHandle(int descriptor) : descriptor_(descriptor) {}
    static std::unique_ptr<NSFileHandle> Open(CFStringRef path, int mode);

    int descriptor_;
};

}  // namespace Foundation
