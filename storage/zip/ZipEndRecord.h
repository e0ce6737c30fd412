// The end of central directory record: where an archive is recognised.
#pragma once

#include <cstdint>

#include "storage/File.h"

namespace ZEMA {

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
