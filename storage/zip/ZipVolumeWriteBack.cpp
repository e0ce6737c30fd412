// Writing the changed contents of a member into the archive.
#include "storage/zip/ZipContents.h"
#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

bool ZipStorageVolume::WriteBack(ZipFileHeader& member) {
    if (!CanEdit()) return false;
    const PackedContents packed = PackContents(member);
    if (!ResizeData(member, packed.size)) return false;
    if (!WritePackedContents(*archive_, member, packed)) return false;
    if (packed.method != member.method && !WriteMethod(member, packed.method)) return false;
    if (!WriteSums(member, packed.crc32)) return false;
    damaged_ = false;
    member.dirty = false;
    return true;
}

// Makes the member's data area `size` bytes large, without a descriptor. From the first change on the archive counts as
// damaged, until the data and its sums are written too.
bool ZipStorageVolume::ResizeData(ZipFileHeader& member, std::uint32_t size) {
    const std::uint64_t oldEnd = member.dataOffset + member.DataAreaSize();
    const std::uint64_t newEnd = std::uint64_t{member.dataOffset} + size;
    const auto distance = static_cast<std::int64_t>(newEnd) - static_cast<std::int64_t>(oldEnd);
    if (!LiesApart(member, oldEnd)) return false;
    if (newEnd > oldEnd && newEnd - oldEnd > kMaxOffset - endRecord_.position) return false;
    const std::uint64_t fileEnd = GetSize(*archive_);
    if (newEnd > oldEnd && !SetSize(*archive_, fileEnd + (newEnd - oldEnd))) return false;
    damaged_ = true;
    if (newEnd != oldEnd) {
        if (!MoveRange(*archive_, oldEnd, newEnd, fileEnd - oldEnd)) return false;
        if (newEnd < oldEnd && !SetSize(*archive_, fileEnd - (oldEnd - newEnd))) return false;
        if (!ShiftMembersBehind(member, distance)) return false;
    }
    member.compressedSize = size;
    return !member.HasDescriptor() || DropDescriptor(member);
}

bool ZipStorageVolume::ShiftMembersBehind(const ZipFileHeader& member, std::int64_t distance) {
    const auto delta = static_cast<std::uint32_t>(distance);  // downwards it wraps around, and the sums wrap back
    ShiftDirectory(distance);
    appendPosition_ += delta;
    for (auto* moved = FileOrder::Next(&member); moved != nullptr; moved = FileOrder::Next(moved)) {
        moved->localHeaderOffset += delta;
        if (moved->dataOffset != 0) moved->dataOffset += delta;
    }
    const bool isLast = FileOrder::Next(&member) == nullptr;
    return (isLast || RewriteLocalHeaderOffsets(member.localHeaderOffset + 1)) &&
           RewriteEndRecord(*archive_, endRecord_);
}

// From now on the local header tells the sums.
bool ZipStorageVolume::DropDescriptor(ZipFileHeader& member) {
    member.flags = static_cast<std::uint16_t>(member.flags & ~kFlagDescriptor);
    char bytes[2];
    StoreU16(bytes, member.flags);
    return WriteAt(*archive_, std::uint64_t{member.localHeaderOffset} + kLocalFlags, sizeof bytes, bytes) &&
           WriteAt(*archive_, CentralHeaderPosition(member) + kCentralFlags, sizeof bytes, bytes);
}

bool ZipStorageVolume::WriteMethod(ZipFileHeader& member, std::uint16_t method) {
    member.method = method;
    char bytes[2];
    StoreU16(bytes, method);
    return WriteAt(*archive_, std::uint64_t{member.localHeaderOffset} + kLocalMethod, sizeof bytes, bytes) &&
           WriteAt(*archive_, CentralHeaderPosition(member) + kCentralMethod, sizeof bytes, bytes);
}

// CRC-32, compressed and uncompressed size, in both headers.
bool ZipStorageVolume::WriteSums(ZipFileHeader& member, std::uint32_t crc32) {
    member.crc32 = crc32;
    member.archivedSize = member.uncompressedSize;
    char bytes[12];
    StoreU32(bytes, member.crc32);
    StoreU32(bytes + 4, member.compressedSize);
    StoreU32(bytes + 8, member.uncompressedSize);
    return WriteAt(*archive_, std::uint64_t{member.localHeaderOffset} + kLocalCrc32, sizeof bytes, bytes) &&
           WriteAt(*archive_, CentralHeaderPosition(member) + kCentralCrc32, sizeof bytes, bytes);
}

}  // namespace ZEMA
