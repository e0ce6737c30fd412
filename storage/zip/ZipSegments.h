// The contents of an archive member while they are in memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "storage/zip/ZipBlock.h"
#include "storage/zip/ZipFileHeader.h"

namespace ZEMA {

using AllocateBlock = void* (*)(std::size_t size);

// Appends segments for at least `size` more bytes, whose contents are not defined. One block for all of them where
// there is one, else halves, so that a large member fits into fragmented memory. False, and nothing appended, when
// memory runs out or the segments would end behind 2^32 - 1.
[[nodiscard]] bool AppendSegments(ZipFileHeader& member, std::uint64_t size, AllocateBlock allocate = MallocBlock);

// Where the segments end.
std::uint64_t SegmentsEnd(const ZipFileHeader& member);

// Drops the segments that begin at `size` or behind it.
void DropSegments(ZipFileHeader& member, std::uint32_t size);

// Each moves bytes between a buffer, or zeros, and a range of the contents; the segments cover the range.
void CopyFromSegments(const ZipFileHeader& member, std::uint64_t offset, std::uint64_t size, void* buffer);
void CopyToSegments(ZipFileHeader& member, std::uint64_t offset, std::uint64_t size, const void* buffer);
void ZeroSegments(ZipFileHeader& member, std::uint64_t offset, std::uint64_t size);

}  // namespace ZEMA
