// The records of a ZIP archive as they lie on disk: signatures, sizes, positions of the fields, byte order.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ZEMA {

// End of central directory record (PKWARE APPNOTE 4.3.16); positions from its first byte.
inline constexpr std::uint32_t kEndRecordSignature = 0x06054B50;  // "PK\5\6"
inline constexpr std::size_t kEndRecordSize = 22;                 // without the comment
inline constexpr std::size_t kEndThisDisk = 4;
inline constexpr std::size_t kEndDirectoryDisk = 6;
inline constexpr std::size_t kEndEntriesOnDisk = 8;  // this and the next three fields are what an edit rewrites
inline constexpr std::size_t kEndEntries = 10;
inline constexpr std::size_t kEndDirectorySize = 12;
inline constexpr std::size_t kEndDirectoryOffset = 16;
inline constexpr std::size_t kEndCommentLength = 20;

// Central directory header (APPNOTE 4.3.12); name, extra field and comment follow.
inline constexpr std::uint32_t kCentralHeaderSignature = 0x02014B50;  // "PK\1\2"
inline constexpr std::size_t kCentralHeaderSize = 46;
inline constexpr std::size_t kCentralVersionMadeBy = 4;
inline constexpr std::size_t kCentralVersionNeeded = 6;
inline constexpr std::size_t kCentralFlags = 8;
inline constexpr std::size_t kCentralMethod = 10;
inline constexpr std::size_t kCentralCrc32 = 16;  // CRC-32, compressed and uncompressed size stand together
inline constexpr std::size_t kCentralCompressedSize = 20;
inline constexpr std::size_t kCentralUncompressedSize = 24;
inline constexpr std::size_t kCentralNameLength = 28;
inline constexpr std::size_t kCentralExtraLength = 30;
inline constexpr std::size_t kCentralCommentLength = 32;
inline constexpr std::size_t kCentralExternalAttributes = 38;
inline constexpr std::size_t kCentralLocalHeaderOffset = 42;

// Local file header (APPNOTE 4.3.7); name and extra field follow, then the data.
inline constexpr std::uint32_t kLocalHeaderSignature = 0x04034B50;  // "PK\3\4"
inline constexpr std::size_t kLocalHeaderSize = 30;
inline constexpr std::size_t kLocalVersionNeeded = 4;
inline constexpr std::size_t kLocalFlags = 6;
inline constexpr std::size_t kLocalMethod = 8;
inline constexpr std::size_t kLocalCrc32 = 14;  // CRC-32, compressed and uncompressed size stand together
inline constexpr std::size_t kLocalCompressedSize = 18;
inline constexpr std::size_t kLocalUncompressedSize = 22;
inline constexpr std::size_t kLocalNameLength = 26;
inline constexpr std::size_t kLocalExtraLength = 28;

// General purpose flags (APPNOTE 4.4.4).
inline constexpr std::uint16_t kFlagEncrypted = 0x0001;
inline constexpr std::uint16_t kFlagDescriptor = 0x0008;  // CRC-32 and sizes follow the data (APPNOTE 4.3.9)
inline constexpr std::uint32_t kDescriptorSize = 12;      // without the signature that some writers put before it

// Compression methods (APPNOTE 4.4.5).
inline constexpr std::uint16_t kMethodStored = 0;
inline constexpr std::uint16_t kMethodDeflated = 8;

inline constexpr std::uint16_t kWrittenVersion = 20;  // of the format, for members that are made here

// What the fields of the records can hold.
inline constexpr std::uint64_t kMaxOffset = 0xFFFFFFFF;
inline constexpr std::uint32_t kMaxEntries = 0xFFFF;
inline constexpr std::uint32_t kMaxNameLength = 0xFFFF;

inline std::uint16_t LoadU16(const char* bytes) {
    return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[0]) | static_cast<unsigned char>(bytes[1]) << 8);
}

inline std::uint32_t LoadU32(const char* bytes) {
    return LoadU16(bytes) | static_cast<std::uint32_t>(LoadU16(bytes + 2)) << 16;
}

inline void StoreU16(char* bytes, std::uint16_t value) {
    bytes[0] = static_cast<char>(value & 0xFF);
    bytes[1] = static_cast<char>(value >> 8);
}

inline void StoreU32(char* bytes, std::uint32_t value) {
    StoreU16(bytes, static_cast<std::uint16_t>(value & 0xFFFF));
    StoreU16(bytes + 2, static_cast<std::uint16_t>(value >> 16));
}

}  // namespace ZEMA
