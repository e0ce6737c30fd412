// What adding, removing and writing back members have in common.
#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

// The offsets of a sound archive: every member before the directory, the directory before the end record, the record
// inside the file.
bool ZipStorageVolume::CanEdit() const {
    if (!IsWritable() || damaged_) return false;
    const ZipFileHeader* last = fileOrder_.Last();
    if (last != nullptr && last->localHeaderOffset >= endRecord_.directoryOffset) return false;
    return GetSize(*archive_) >= std::uint64_t{endRecord_.position} + kEndRecordSize;
}

// Whether nobody else claims bytes between the member's local header and `end`: moving those would tear a neighbour
// apart. Of the member before, only what its central header tells is asked.
bool ZipStorageVolume::LiesApart(const ZipFileHeader& member, std::uint64_t end) const {
    const ZipFileHeader* next = FileOrder::Next(&member);
    if (end > (next != nullptr ? next->localHeaderOffset : endRecord_.directoryOffset)) return false;
    const ZipFileHeader* previous = FileOrder::Previous(&member);
    return previous == nullptr ||
           std::uint64_t{previous->localHeaderOffset} + kLocalHeaderSize + previous->compressedSize <=
               member.localHeaderOffset;
}

bool ZipStorageVolume::WriteLocalHeaderOffset(const ZipFileHeader& member) {
    char bytes[4];
    StoreU32(bytes, member.localHeaderOffset);
    const std::uint64_t offset = std::uint64_t{member.centralHeaderOffset} + kCentralLocalHeaderOffset;
    return WriteAt(*archive_, offset, sizeof bytes, bytes);
}

// The directory and all behind it has moved.
void ZipStorageVolume::ShiftDirectory(std::int64_t distance) {
    const auto delta = static_cast<std::uint32_t>(distance);  // downwards it wraps around, and the sums wrap back
    for (auto* member = directoryOrder_.First(); member != nullptr; member = DirectoryOrder::Next(member)) {
        member->centralHeaderOffset += delta;
    }
    endRecord_.directoryOffset += delta;
    endRecord_.position += delta;
    centralDirectoryEnd_ += delta;
}

bool ZipStorageVolume::FindAppendPosition(std::uint32_t& position) {
    if (!appendPositionKnown_) {
        std::uint64_t end = 0;
        if (const ZipFileHeader* last = fileOrder_.Last()) {
            ZipLocalHeader header;
            if (!ReadLocalHeader(*last, header)) return false;
            end = last->localHeaderOffset + header.Size() + last->DataAreaSize();
        }
        if (end > endRecord_.directoryOffset) return false;
        appendPosition_ = static_cast<std::uint32_t>(end);
        appendPositionKnown_ = true;
    }
    position = appendPosition_;
    return true;
}

}  // namespace ZEMA
