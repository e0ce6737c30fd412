#include "storage/zip/ZipRecords.h"

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

}  // namespace ZEMA
