// The contents of files, inside archives and outside.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/archive/StorageTree.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/Crc32.h"

namespace ZEMA {

// Reads one file from front to back. What an archive holds is compared with its checksum, at the end.
class StorageReader {
public:
    // Null, with a `problem`, when the item is no file or cannot be opened.
    static std::unique_ptr<StorageReader> Open(const StorageItem& item, std::string& problem);

    // How many bytes were read, 0 at the end; null, with a `problem`, when reading failed.
    std::optional<std::size_t> Read(void* buffer, std::size_t size, std::string& problem);

    // Of a file outside of archives its descriptor, else -1.
    int Descriptor() const { return file_.Get(); }

private:
    std::optional<std::size_t> ReadNative(void* buffer, std::size_t size, std::string& problem);
    std::optional<std::size_t> ReadMember(void* buffer, std::size_t size, std::string& problem);

    FileDescriptor file_;
    MountedArchive::Pointer archive_;
    RefPointer<File> member_;
    std::uint64_t left_ = 0;      // of the member
    std::uint32_t expected_ = 0;  // its checksum
    Crc32 crc_;
};

inline constexpr std::size_t kReadBufferSize = 1 << 18;

}  // namespace ZEMA
