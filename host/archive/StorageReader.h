// The contents of files, inside archives and outside.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/archive/StorageTree.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/Crc32.h"

namespace ZEMA {

// Reads one file from front to back. What an archive holds is compared with its checksum, at the end.
class StorageReader {
public:
    static Result<std::unique_ptr<StorageReader>> Open(const StorageItem& item);

    // How many bytes were read, 0 at the end.
    Result<std::size_t> Read(void* buffer, std::size_t size);

private:
    Result<std::size_t> ReadNative(void* buffer, std::size_t size);
    Result<std::size_t> ReadMember(void* buffer, std::size_t size);

    FileDescriptor file_;
    MountedArchive::Pointer archive_;
    RefPointer<File> member_;
    std::uint64_t left_ = 0;      // of the member
    std::uint32_t expected_ = 0;  // its checksum
    Crc32 crc_;
};

inline constexpr std::size_t kReadBufferSize = 1 << 18;

}  // namespace ZEMA
