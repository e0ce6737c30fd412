// What adding, removing and writing back members have in common.
#include <algorithm>
#include <utility>

#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

namespace {

// Overwrites fields of 32 bits that come in ascending order, several with one call where they stand close together.
class FieldWriter {
public:
    // The fields lie before `end`.
    FieldWriter(File& file, std::uint64_t end) : file_(file), end_(end) {}

    [[nodiscard]] bool Store(std::uint64_t offset, std::uint32_t value) {
        if (size_ - std::min(offset - start_, size_) < sizeof value && !(Flush() && Load(offset))) return false;
        StoreU32(bytes_ + (offset - start_), value);
        used_ = offset - start_ + sizeof value;
        return true;
    }

    [[nodiscard]] bool Flush() {
        const std::uint64_t used = std::exchange(used_, 0);
        return used == 0 || WriteAt(file_, start_, used, bytes_);
    }

private:
    bool Load(std::uint64_t offset) {
        if (end_ < offset + 4) return false;
        start_ = offset;
        size_ = std::min<std::uint64_t>(sizeof bytes_, end_ - offset);
        return ReadAt(file_, start_, size_, bytes_);
    }

    File& file_;
    std::uint64_t end_;
    char bytes_[0x4000];  // of the file, from start_ on
    std::uint64_t start_ = 0;
    std::uint64_t size_ = 0;
    std::uint64_t used_ = 0;  // up to the last field stored
};

}  // namespace

// The offsets of a sound archive: every member before the directory, every entry of the directory before the end
// record, the record inside the file.
bool ZipStorageVolume::CanEdit() const {
    if (!IsWritable() || damaged_ || directoryOverruns_) return false;
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

// The directory is read and written in pieces, since an archive of many members would otherwise cost a call for each.
bool ZipStorageVolume::RewriteLocalHeaderOffsets(std::uint32_t from) {
    FieldWriter writer(*archive_, centralDirectoryEnd_);
    for (auto* member = directoryOrder_.First(); member != nullptr; member = DirectoryOrder::Next(member)) {
        if (member->localHeaderOffset < from) continue;
        const std::uint64_t field = CentralHeaderPosition(*member) + kCentralLocalHeaderOffset;
        if (!writer.Store(field, member->localHeaderOffset)) return false;
    }
    return writer.Flush();
}

// The directory and all behind it has moved.
void ZipStorageVolume::ShiftDirectory(std::int64_t distance) {
    const auto delta = static_cast<std::uint32_t>(distance);  // downwards it wraps around, and the sums wrap back
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
