#include "platform/Foundation/NSFileHandle.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "platform/Foundation/NSPathUtilities.h"
#include "platform/Foundation/RegularFile.h"
#include "platform/Foundation/Uninterrupted.h"

namespace Foundation {
namespace {

static_assert(sizeof(off_t) == sizeof(std::uint64_t), "offsets have 64 bits");

// The system moves at most about 2 GiB in one call.
constexpr std::uint64_t kLargestTransfer = 1u << 30;

[[noreturn]] void Raise(const char* operation, int error) {
    throw NSException(NSFileHandleOperationException,
                      std::string(operation) + ": " + std::system_category().message(error));
}

// The system is not asked about a transfer of no bytes, and could not tell.
void RequireOpen(const char* operation, int descriptor) {
    if (descriptor == -1) Raise(operation, EBADF);
}

off_t ToOffset(const char* operation, std::uint64_t offset) {
    if (offset > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) Raise(operation, EFBIG);
    return static_cast<off_t>(offset);
}

}  // namespace

NSException::NSException(const char* name, std::string reason) : name_(name), reason_(std::move(reason)) {}

// Out of line, so that the type information stands once, in this library.
NSException::~NSException() = default;

std::unique_ptr<NSFileHandle> NSFileHandle::fileHandleForReadingAtPath(CFStringRef path) {
    return Open(path, O_RDONLY);
}

std::unique_ptr<NSFileHandle> NSFileHandle::fileHandleForWritingAtPath(CFStringRef path) {
    return Open(path, O_WRONLY);
}

std::unique_ptr<NSFileHandle> NSFileHandle::fileHandleForUpdatingAtPath(CFStringRef path) {
    return Open(path, O_RDWR);
}

std::unique_ptr<NSFileHandle> NSFileHandle::Open(CFStringRef path, int mode) {
    const std::optional<std::string> name = FileSystemRepresentation(path);
    const int descriptor = name ? OpenRegularFile(*name, mode) : -1;
    if (descriptor == -1) return nullptr;
    try {
        return std::unique_ptr<NSFileHandle>(new NSFileHandle(descriptor));
    } catch (...) {
        close(descriptor);
        throw;
    }
}

NSFileHandle::~NSFileHandle() {
    if (descriptor_ != -1) close(descriptor_);
}

NSData NSFileHandle::readDataOfLength(std::uint64_t length) {
    // Grows with what is there, not with what was asked for.
    constexpr std::uint64_t kFirstPiece = 1u << 16;
    RequireOpen("read", descriptor_);
    NSData data;
    while (data.size() < length) {
        const std::uint64_t present = data.size();
        const std::uint64_t piece = std::min(length - present, std::max(kFirstPiece, present));
        data.resize(present + piece);
        const std::uint64_t done = readBytes(data.data() + present, piece);
        data.resize(present + done);
        if (done < piece) break;
    }
    return data;
}

std::uint64_t NSFileHandle::readBytes(void* buffer, std::uint64_t length, std::uint64_t* done) {
    std::uint64_t count = 0;
    if (done != nullptr) *done = 0;
    RequireOpen("read", descriptor_);
    while (count < length) {
        char* const to = static_cast<char*>(buffer) + count;
        const std::uint64_t piece = std::min(length - count, kLargestTransfer);
        const ssize_t moved = Uninterrupted([&] { return read(descriptor_, to, piece); });
        if (moved == -1) Raise("read", errno);
        if (moved == 0) break;
        count += static_cast<std::uint64_t>(moved);
        if (done != nullptr) *done = count;
    }
    return count;
}

void NSFileHandle::writeData(const void* bytes, std::uint64_t length) {
    RequireOpen("write", descriptor_);
    for (std::uint64_t count = 0; count < length;) {
        const char* const from = static_cast<const char*>(bytes) + count;
        const std::uint64_t piece = std::min(length - count, kLargestTransfer);
        const ssize_t moved = Uninterrupted([&] { return write(descriptor_, from, piece); });
        if (moved == -1) Raise("write", errno);
        if (moved == 0) Raise("write", EIO);  // no progress and no reason: never try that for ever
        count += static_cast<std::uint64_t>(moved);
    }
}

void NSFileHandle::truncateFileAtOffset(std::uint64_t offset) {
    const off_t end = ToOffset("truncate", offset);
    if (Uninterrupted([&] { return ftruncate(descriptor_, end); }) != 0) Raise("truncate", errno);
    seekToFileOffset(offset);
}

void NSFileHandle::seekToFileOffset(std::uint64_t offset) {
    if (lseek(descriptor_, ToOffset("seek", offset), SEEK_SET) == -1) Raise("seek", errno);
}

std::uint64_t NSFileHandle::offsetInFile() const {
    const off_t offset = lseek(descriptor_, 0, SEEK_CUR);
    if (offset == -1) Raise("seek", errno);
    return static_cast<std::uint64_t>(offset);
}

void NSFileHandle::closeFile() {
    RequireOpen("close", descriptor_);
    // Whatever it answers, the descriptor is gone.
    close(descriptor_);
    descriptor_ = -1;
}

}  // namespace Foundation
