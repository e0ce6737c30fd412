// One member of an archive.
#pragma once

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

}  // namespace ZEMA
