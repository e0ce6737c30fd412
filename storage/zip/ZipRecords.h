// The records of an archive: the two headers of a member, and the record at the end where an archive is recognised.
#pragma once

#include <cstdint>

#include "core/AString.h"
#include "storage/ElementAttributes.h"
#include "storage/File.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

// What is used of a central directory header. Sizes and offsets are bytes; offsets are from the start of the archive.
struct ZipCentralHeader {
    std::uint16_t versionMadeBy = 0;  // the high byte names the host whose attributes these are
    std::uint16_t versionNeeded = 0;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t crc32 = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t uncompressedSize = 0;
    std::uint16_t nameLength = 0;
    std::uint16_t extraLength = 0;
    std::uint16_t commentLength = 0;
    std::uint32_t externalAttributes = 0;
    std::uint32_t localHeaderOffset = 0;

    // The header and all that follows it.
    std::uint64_t EntrySize() const {
        return std::uint64_t{kCentralHeaderSize} + nameLength + extraLength + commentLength;
    }
};

// What is used of a local file header.
struct ZipLocalHeader {
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t crc32 = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t uncompressedSize = 0;
    std::uint16_t nameLength = 0;
    std::uint16_t extraLength = 0;

    // The header, its name and its extra field: where the data begins.
    std::uint64_t Size() const { return std::uint64_t{kLocalHeaderSize} + nameLength + extraLength; }
};

// Each reads the fixed part of a header; false, and nothing changed, for another signature.
[[nodiscard]] bool ParseCentralHeader(const char* bytes, ZipCentralHeader& header);
[[nodiscard]] bool ParseLocalHeader(const char* bytes, ZipLocalHeader& header);

// The headers of a new, empty member; `name` has at most kMaxNameLength bytes.
AString BuildLocalHeader(const AString& name);
AString BuildCentralHeader(const AString& name, std::uint32_t localHeaderOffset);

// The flags that a central header's attributes stand for, by the host that wrote them. Bits of `old` that mean nothing
// on that host are kept.
ElementFlags FlagsFromAttributes(const ZipCentralHeader& header, ElementFlags old);

// Offsets are from the start of the archive, sizes are bytes.
struct ZipEndRecord {
    std::uint32_t position = 0;  // of the record itself
    std::uint16_t entryCount = 0;
    std::uint32_t directorySize = 0;
    std::uint32_t directoryOffset = 0;
};

// Writes the record of an empty archive into an empty file.
[[nodiscard]] bool WriteEmptyEndRecord(File& archive);

// Finds and reads the record. False unless the file ends in one that describes a single-disk archive whose central
// directory ends where the record begins. Its last 65,535 bytes are searched from the end, and the first signature
// counts, wherever it comes from.
[[nodiscard]] bool ReadEndRecord(File& archive, ZipEndRecord& record);

// Rewrites entry counts, directory size and directory offset where the record stands.
[[nodiscard]] bool RewriteEndRecord(File& archive, const ZipEndRecord& record);

}  // namespace ZEMA
