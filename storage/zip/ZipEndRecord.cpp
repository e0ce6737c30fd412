#include "storage/zip/ZipEndRecord.h"

#include <algorithm>

#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

constexpr std::uint64_t kSearchedBytes = 65535;
constexpr std::uint64_t kBlockStep = 1024;
constexpr std::uint64_t kBlockSize = kBlockStep + 4;  // so that a signature never falls between two blocks

// Looks for the last signature that begins in the searched part of the file.
bool FindSignature(File& archive, std::uint64_t fileSize, std::uint64_t& position) {
    const std::uint64_t searched = std::min(fileSize, kSearchedBytes);
    if (searched < 5) return false;
    char block[kBlockSize];
    std::uint64_t back = std::min(kBlockSize, searched);
    for (;;) {
        const std::uint64_t start = fileSize - back;
        const std::uint64_t size = std::min(kBlockSize, back);
        if (!ReadAt(archive, start, size, block)) return false;
        for (std::uint64_t i = size - 3; i-- > 0;) {
            if (LoadU32(block + i) != kEndRecordSignature) continue;
            position = start + i;
            return true;
        }
        if (back == searched) return false;
        back = std::min(back + kBlockStep, searched);
    }
}

}  // namespace

bool WriteEmptyEndRecord(File& archive) {
    char bytes[kEndRecordSize] = {};
    StoreU32(bytes, kEndRecordSignature);
    return WriteAt(archive, 0, kEndRecordSize, bytes);
}

bool ReadEndRecord(File& archive, ZipEndRecord& record) {
    const std::uint64_t fileSize = GetSize(archive);
    std::uint64_t position = 0;
    if (!FindSignature(archive, fileSize, position)) return false;
    if (fileSize - position < kEndRecordSize || position > kMaxOffset) return false;
    char bytes[kEndRecordSize];
    if (!ReadAt(archive, position, kEndRecordSize, bytes)) return false;

    if (LoadU16(bytes + kEndThisDisk) != 0 || LoadU16(bytes + kEndDirectoryDisk) != 0) return false;
    if (LoadU16(bytes + kEndEntriesOnDisk) != LoadU16(bytes + kEndEntries)) return false;
    const std::uint32_t size = LoadU32(bytes + kEndDirectorySize);
    const std::uint32_t offset = LoadU32(bytes + kEndDirectoryOffset);
    if (std::uint64_t{offset} + size != position) return false;

    record.position = static_cast<std::uint32_t>(position);
    record.entryCount = LoadU16(bytes + kEndEntries);
    record.directorySize = size;
    record.directoryOffset = offset;
    return true;
}

bool RewriteEndRecord(File& archive, const ZipEndRecord& record) {
    char bytes[kEndRecordSize] = {};
    StoreU16(bytes + kEndEntriesOnDisk, record.entryCount);
    StoreU16(bytes + kEndEntries, record.entryCount);
    StoreU32(bytes + kEndDirectorySize, record.directorySize);
    StoreU32(bytes + kEndDirectoryOffset, record.directoryOffset);
    return WriteAt(archive, std::uint64_t{record.position} + kEndEntriesOnDisk, kEndCommentLength - kEndEntriesOnDisk,
                   bytes + kEndEntriesOnDisk);
}

}  // namespace ZEMA
