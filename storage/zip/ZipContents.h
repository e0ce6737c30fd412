// The contents of an archive member on their way from the archive into memory and back.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "storage/File.h"
#include "storage/zip/ZipFileHeader.h"

namespace ZEMA {

// Whether the archive can hold what the member claims. The contents of a stored member must lie inside the file; the
// packed bytes of another one must, and its contents be no larger than those can unpack to. Asked before anything of a
// size from the archive is allocated. The data offset is known.
[[nodiscard]] bool ClaimsPlausibleSize(const ZipFileHeader& member, std::uint64_t archiveSize);

// Brings the contents into segments, unless they are there or the member is empty. False, with no segments, for an
// encrypted member, for data that does not unpack, and when memory runs out. Neither the checksum nor the unpacked
// length is compared; bytes that the data does not give are zero.
[[nodiscard]] bool LoadContents(File& archive, ZipFileHeader& member);

// Bytes in one block of memory, which goes with them.
struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};
using MallocBytes = std::unique_ptr<unsigned char, FreeBlock>;

// Contents ready to be written into the archive.
struct PackedContents {
    std::uint16_t method = 0;
    std::uint32_t crc32 = 0;
    std::uint32_t size = 0;  // in the archive
    MallocBytes bytes;       // null: the segments are stored as they are
};

// Deflates the contents, or leaves them stored where they would not become smaller or there is no memory for it.
PackedContents PackContents(const ZipFileHeader& member);

// Writes packed contents at the member's data offset.
[[nodiscard]] bool WritePackedContents(File& archive, const ZipFileHeader& member, const PackedContents& packed);

}  // namespace ZEMA
