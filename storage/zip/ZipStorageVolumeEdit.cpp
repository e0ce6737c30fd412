// Adding a member, writing changed contents back, and what these have in common with removing.
#include <algorithm>
#include <utility>

#include "storage/zip/ZipContents.h"
#include "storage/zip/ZipMemberNames.h"
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

constexpr std::uint8_t kNewMemberFlags =
    ElementFlags::kReadable | ElementFlags::kWritable | ElementFlags::kEntriesWritable;

RefPointer<ZipFileHeader> MakeNewMember(std::uint32_t localHeaderOffset, bool directory) {
    RefPointer<ZipFileHeader> member = New<ZipFileHeader>();
    member->versionMadeBy = kWrittenVersion;
    member->versionNeeded = kWrittenVersion;
    member->localHeaderOffset = localHeaderOffset;
    member->elementFlags.Set(kNewMemberFlags, true);
    member->elementFlags.Set(ElementFlags::kDirectory, directory);
    return member;
}

// Puts a member into the tree before the archive is touched, and takes it out again unless it stays.
class PlacedMember {
public:
    PlacedMember(ZipTreeNode& parent, const String& name, ZipFileHeader& member)
        : isNew_(parent.FindChild(name) == nullptr) {
        nodes_.Reserve(1);
        nodes_.PushBack(&GetOrAddChild(parent, name, &member));
        if (!isNew_) nodes_[0]->SetHeader(&member);
    }
    PlacedMember(const PlacedMember&) = delete;
    PlacedMember& operator=(const PlacedMember&) = delete;
    ~PlacedMember() {
        if (stays_) return;
        if (isNew_) {
            nodes_[0]->Erase(nodes_);
        } else {
            nodes_[0]->SetHeader(nullptr);
        }
    }
    RefPointer<ZipTreeNode> Keep() {
        stays_ = true;
        return nodes_[0];
    }

private:
    bool isNew_;
    bool stays_ = false;
    BasicArray<RefPointer<ZipTreeNode>> nodes_;
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

RefPointer<ZipTreeNode> ZipStorageVolume::AddMember(ZipTreeNode& parent, const String& name, bool directory) {
    AString path;
    std::uint32_t position = 0;
    if (!CanEdit() || parent.IsErased() || endRecord_.entryCount == kMaxEntries) return nullptr;
    if (!BuildMemberName(parent, name, directory, path) || !FindAppendPosition(position)) return nullptr;
    if (const ZipTreeNode* taken = parent.FindChild(name)) {
        if (!directory || taken->Header() != nullptr) return nullptr;
    }
    const AString localHeader = BuildLocalHeader(path);
    const AString centralHeader = BuildCentralHeader(path, position);
    if (std::uint64_t{endRecord_.position} + localHeader.Length() + centralHeader.Length() > kMaxOffset) return nullptr;

    const RefPointer<ZipFileHeader> member = MakeNewMember(position, directory);
    PlacedMember placed(parent, name, *member);
    if (!InsertMember(*member, localHeader, centralHeader)) return nullptr;
    if (!directory) member->dataOffset = position + localHeader.Length();
    return placed.Keep();
}

bool ZipStorageVolume::InsertMember(ZipFileHeader& member, const AString& localHeader, const AString& centralHeader) {
    const std::uint64_t fileEnd = GetSize(*archive_);
    const std::uint32_t localSize = localHeader.Length();
    const std::uint32_t centralSize = centralHeader.Length();
    if (!SetSize(*archive_, fileEnd + localSize + centralSize)) return false;
    damaged_ = true;

    const std::uint64_t local = member.localHeaderOffset;
    if (!MoveRange(*archive_, local, local + localSize, fileEnd - local)) return false;
    if (!WriteAt(*archive_, local, localSize, localHeader.Data())) return false;
    ShiftDirectory(localSize);

    const std::uint64_t central = centralDirectoryEnd_;
    if (!MoveRange(*archive_, central, central + centralSize, fileEnd + localSize - central)) return false;
    if (!WriteAt(*archive_, central, centralSize, centralHeader.Data())) return false;
    member.centralHeaderOffset = centralDirectoryEnd_ - endRecord_.directoryOffset;
    centralDirectoryEnd_ += centralSize;
    endRecord_.position += centralSize;
    endRecord_.directorySize += centralSize;
    ++endRecord_.entryCount;
    if (!RewriteEndRecord(*archive_, endRecord_)) return false;

    Link(member);
    appendPosition_ = member.localHeaderOffset + localSize;
    damaged_ = false;
    return true;
}

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
