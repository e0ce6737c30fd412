#include "storage/zip/ZipRecords.h"

#include <algorithm>
#include <cstring>

namespace ZEMA {

namespace {

// The hosts whose attributes are understood (APPNOTE 4.4.2).
constexpr std::uint8_t kHostMsDos = 0;
constexpr std::uint8_t kHostUnix = 3;
constexpr std::uint8_t kHostOsX = 19;

// Unix keeps the mode in the upper half of the external attributes.
constexpr std::uint32_t kOwnerMayRead = 0400u << 16;
constexpr std::uint32_t kOwnerMayWrite = 0200u << 16;
constexpr std::uint32_t kOwnerMayExecute = 0100u << 16;

// MS-DOS keeps its attribute byte in the lowest one.
constexpr std::uint32_t kDosReadOnly = 0x01;
constexpr std::uint32_t kDosHidden = 0x02;
constexpr std::uint32_t kDosDirectory = 0x10;

constexpr std::uint8_t kBothWritable = ElementFlags::kWritable | ElementFlags::kEntriesWritable;

ElementFlags KeepBits(ElementFlags old, unsigned mask) {
    return {static_cast<std::uint8_t>(old.bits & mask)};
}

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

bool ParseCentralHeader(const char* bytes, ZipCentralHeader& header) {
    if (LoadU32(bytes) != kCentralHeaderSignature) return false;
    header.versionMadeBy = LoadU16(bytes + kCentralVersionMadeBy);
    header.versionNeeded = LoadU16(bytes + kCentralVersionNeeded);
    header.flags = LoadU16(bytes + kCentralFlags);
    header.method = LoadU16(bytes + kCentralMethod);
    header.crc32 = LoadU32(bytes + kCentralCrc32);
    header.compressedSize = LoadU32(bytes + kCentralCompressedSize);
    header.uncompressedSize = LoadU32(bytes + kCentralUncompressedSize);
    header.nameLength = LoadU16(bytes + kCentralNameLength);
    header.extraLength = LoadU16(bytes + kCentralExtraLength);
    header.commentLength = LoadU16(bytes + kCentralCommentLength);
    header.externalAttributes = LoadU32(bytes + kCentralExternalAttributes);
    header.localHeaderOffset = LoadU32(bytes + kCentralLocalHeaderOffset);
    return true;
}

bool ParseLocalHeader(const char* bytes, ZipLocalHeader& header) {
    if (LoadU32(bytes) != kLocalHeaderSignature) return false;
    header.flags = LoadU16(bytes + kLocalFlags);
    header.method = LoadU16(bytes + kLocalMethod);
    header.crc32 = LoadU32(bytes + kLocalCrc32);
    header.compressedSize = LoadU32(bytes + kLocalCompressedSize);
    header.uncompressedSize = LoadU32(bytes + kLocalUncompressedSize);
    header.nameLength = LoadU16(bytes + kLocalNameLength);
    header.extraLength = LoadU16(bytes + kLocalExtraLength);
    return true;
}

AString BuildLocalHeader(const AString& name) {
    AString bytes;
    char* header = bytes.ResizeForOverwrite(static_cast<std::uint32_t>(kLocalHeaderSize + name.Length()));
    std::memset(header, 0, kLocalHeaderSize);
    StoreU32(header, kLocalHeaderSignature);
    StoreU16(header + kLocalVersionNeeded, kWrittenVersion);
    StoreU16(header + kLocalNameLength, static_cast<std::uint16_t>(name.Length()));
    std::memcpy(header + kLocalHeaderSize, name.Data(), name.Length());
    return bytes;
}

AString BuildCentralHeader(const AString& name, std::uint32_t localHeaderOffset) {
    AString bytes;
    char* header = bytes.ResizeForOverwrite(static_cast<std::uint32_t>(kCentralHeaderSize + name.Length()));
    std::memset(header, 0, kCentralHeaderSize);
    StoreU32(header, kCentralHeaderSignature);
    StoreU16(header + kCentralVersionMadeBy, kWrittenVersion);
    StoreU16(header + kCentralVersionNeeded, kWrittenVersion);
    StoreU16(header + kCentralNameLength, static_cast<std::uint16_t>(name.Length()));
    StoreU32(header + kCentralLocalHeaderOffset, localHeaderOffset);
    std::memcpy(header + kCentralHeaderSize, name.Data(), name.Length());
    return bytes;
}

ElementFlags FlagsFromAttributes(const ZipCentralHeader& header, ElementFlags old) {
    const std::uint32_t attributes = header.externalAttributes;
    const auto host = static_cast<std::uint8_t>(header.versionMadeBy >> 8);
    if (host == kHostUnix || host == kHostOsX) {
        ElementFlags flags = KeepBits(old, 0xC0);
        flags.Set(ElementFlags::kReadable, (attributes & kOwnerMayRead) != 0);
        flags.Set(kBothWritable, (attributes & kOwnerMayWrite) != 0);
        flags.Set(ElementFlags::kExecutable, (attributes & kOwnerMayExecute) != 0);
        return flags;
    }
    ElementFlags flags = KeepBits(old, 0xE0);
    flags.Set(ElementFlags::kReadable, true);
    flags.Set(kBothWritable, host != kHostMsDos || (attributes & kDosReadOnly) == 0);
    if (host == kHostMsDos) {
        flags.Set(ElementFlags::kDirectory, (attributes & kDosDirectory) != 0);
        flags.Set(ElementFlags::kHidden, (attributes & kDosHidden) != 0);
    }
    return flags;
}

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
