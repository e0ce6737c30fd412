// Reading the central directory of an archive.
#include <algorithm>

#include "storage/zip/ZipDirectoryWindow.h"
#include "storage/zip/ZipMemberNames.h"
#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

namespace {

bool InFileOrder(const ZipFileHeader* a, const ZipFileHeader* b) {
    return a->localHeaderOffset < b->localHeaderOffset;
}

RefPointer<ZipFileHeader> MakeMember(const ZipCentralHeader& header, std::uint32_t offset, bool writable) {
    RefPointer<ZipFileHeader> member = New<ZipFileHeader>();
    member->centralHeaderOffset = offset;
    member->versionMadeBy = header.versionMadeBy;
    member->versionNeeded = header.versionNeeded;
    member->flags = header.flags;
    member->method = header.method;
    member->crc32 = header.crc32;
    member->compressedSize = header.compressedSize;
    member->uncompressedSize = header.uncompressedSize;
    member->archivedSize = header.uncompressedSize;
    member->localHeaderOffset = header.localHeaderOffset;
    member->elementFlags = FlagsFromAttributes(header, ElementFlags());
    if (!writable) member->elementFlags.Set(ElementFlags::kEntriesWritable, false);
    return member;
}

}  // namespace

bool ZipStorageVolume::Open() {
    if (GetSize(*archive_) == 0 && !(IsWritable() && WriteEmptyEndRecord(*archive_))) return false;
    if (!ReadEndRecord(*archive_, endRecord_)) return false;
    rootNode_ = New<ZipTreeNode>(String(), nullptr, nullptr);
    if (!ReadCentralDirectory()) return false;
    SortFileOrder();
    return true;
}

bool ZipStorageVolume::ReadCentralDirectory() {
    ZipDirectoryWindow window(*archive_, GetSize(*archive_));
    ZipNamePlacer placer(*rootNode_);
    std::uint64_t position = endRecord_.directoryOffset;
    while (position < endRecord_.position) {
        const char* bytes = window.Read(position, kCentralHeaderSize);
        if (bytes == nullptr) return false;
        ZipCentralHeader header;
        if (!ParseCentralHeader(bytes, header)) break;
        const std::uint64_t offset = position - endRecord_.directoryOffset;
        const RefPointer<ZipFileHeader> member = MakeMember(header, static_cast<std::uint32_t>(offset), IsWritable());
        Link(*member);

        const char* name = window.Read(position + kCentralHeaderSize, header.nameLength);
        if (name == nullptr || !placer.Place({name, header.nameLength}, *member)) return false;
        position += header.EntrySize();
    }
    directoryOverruns_ = position > endRecord_.position;
    centralDirectoryEnd_ = static_cast<std::uint32_t>(std::min<std::uint64_t>(position, endRecord_.position));
    return true;
}

// Members were linked in the order of the directory, which mostly is the order of the file as well. Those that claim
// the same place stay in the order of the directory.
void ZipStorageVolume::SortFileOrder() {
    BasicArray<ZipFileHeader*> members;
    bool sorted = true;
    for (ZipFileHeader* member = fileOrder_.First(); member != nullptr; member = FileOrder::Next(member)) {
        sorted = sorted && (members.Empty() || !InFileOrder(member, members.Back()));
        members.PushBack(member);
    }
    if (sorted) return;
    std::stable_sort(members.begin(), members.end(), InFileOrder);
    fileOrder_ = FileOrder();
    for (ZipFileHeader* member : members) fileOrder_.PushBack(member);
}

}  // namespace ZEMA
