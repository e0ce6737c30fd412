// The central directory, read in large pieces.
#pragma once

#include <cstdint>

#include "core/AString.h"
#include "storage/File.h"

namespace ZEMA {

// Shows ranges of a file that are asked for front to back, mostly without a read of their own. Fails exactly for the
// ranges that cannot be read by themselves.
class ZipDirectoryWindow {
public:
    ZipDirectoryWindow(File& file, std::uint64_t fileSize) : file_(file), fileSize_(fileSize) {}
    ZipDirectoryWindow(const ZipDirectoryWindow&) = delete;
    ZipDirectoryWindow& operator=(const ZipDirectoryWindow&) = delete;

    // The bytes of a range of at most 65,535 bytes, until the next call; null when it cannot be read.
    const char* Read(std::uint64_t offset, std::uint32_t size);

private:
    bool Fill(std::uint64_t offset, std::uint64_t size);

    File& file_;
    std::uint64_t fileSize_;
    AString bytes_;
    std::uint64_t start_ = 0;  // of the bytes, in the file
};

}  // namespace ZEMA
