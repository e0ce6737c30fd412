// One member of an archive, and its contents while they are in memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/BasicArray.h"
#include "core/Object.h"
#include "storage/ElementAttributes.h"

namespace ZEMA {

// What the central directory says of a member, where it lies, who has it open, and its contents while they are in
// memory. Sizes are bytes, offsets are from the start of the archive. Its name lives in the tree of nodes.
//
// Ownership: the volume holds every member, the node that names one holds it too.
// Threads:   guarded by StorageMutex.
class ZipFileHeader : public Object {
public:
    // One block of the contents. The segments of a member lie end to end, from offset 0; together they may reach
    // behind its size.
    struct FileDataSegment {
        std::uint32_t offset;  // in the member
        std::uint32_t size;
        void* data;
        bool owned;  // given back with `free`
    };

    // A member's neighbours in one of the volume's two orders, which hold the members.
    struct Links {
        ZipFileHeader* previous = nullptr;
        ZipFileHeader* next = nullptr;
    };

    std::uint32_t centralHeaderOffset = 0;  // from the start of the central directory, which moves with every edit
    Links fileOrder;                        // by local header offset
    Links directoryOrder;                   // by central header offset
    std::uint16_t versionMadeBy = 0;
    std::uint16_t versionNeeded = 0;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t crc32 = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t uncompressedSize = 0;  // of the contents in memory, while there are changes
    std::uint32_t archivedSize = 0;      // the uncompressed size that the archive states
    std::uint32_t localHeaderOffset = 0;
    ElementTimes times;            // in memory only
    std::uint32_t dataOffset = 0;  // 0 until the local header has been read
    ElementFlags elementFlags;
    BasicArray<FileDataSegment> segments;
    bool dirty = false;  // the contents differ from the archive

    // The open files of the member, and how they are open.
    std::uint32_t openCount = 0;
    std::uint32_t readerCount = 0;
    std::uint32_t writerCount = 0;
    std::uint32_t denyReadCount = 0;
    std::uint32_t denyWriteCount = 0;

    bool HasDescriptor() const;

    // The bytes that the data takes in the archive, with the descriptor that flag bit 3 puts behind it.
    std::uint64_t DataAreaSize() const;

    // What follows the last close: changes that were not written back go with the contents.
    void ForgetContents();

protected:
    ~ZipFileHeader() override;
};

// As `malloc`, for blocks that are filled from front to back. Large ones ask the system for large pages: the first
// touch of every small page costs more than unpacking into it.
void* MallocBlock(std::size_t size);

// How a block for contents is had: null when there is no memory. The block goes with `free`.
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
