// The contents of a member as they lie in a file.
#pragma once

#include <cstddef>
#include <cstdint>

#include "storage/File.h"

namespace ZEMA {

class FileWindow;

// Where packed bytes are, and what they are. Sizes are bytes, the offset is from the start of the file.
struct PackedData {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::uint64_t unpackedSize = 0;
    std::uint32_t crc32 = 0;
    std::uint16_t method = 0;
};

// Size and checksum of contents that come in pieces.
class ContentsSums {
public:
    void Add(const void* bytes, std::size_t count);
    std::uint64_t Size() const { return size_; }
    std::uint32_t Crc32() const { return crc32_; }

private:
    std::uint64_t size_ = 0;
    std::uint32_t crc32_ = 0;
};

// Whether the bytes unpack to exactly that size and checksum. Methods 0 and 8 only. Takes little memory, whatever the
// sizes are.
bool IsSound(FileWindow& window, File& file, const PackedData& data);

}  // namespace ZEMA
