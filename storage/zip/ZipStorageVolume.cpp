// Opening an archive, and finding the data of its members.
#include "storage/zip/ZipStorageVolume.h"

#include <algorithm>

#include "storage/zip/ZipMemberNames.h"

namespace ZEMA {

namespace {

constexpr std::uint64_t kWindowSize = 0x20000;

// Shows ranges of a file that are asked for front to back, mostly without a read of their own. Fails exactly for the
// ranges that cannot be read by themselves.
class ZipDirectoryWindow {
public:
    ZipDirectoryWindow(File& file, std::uint64_t fileSize) : file_(file), fileSize_(fileSize) {}
    ZipDirectoryWindow(const ZipDirectoryWindow&) = delete;
    ZipDirectoryWindow& operator=(const ZipDirectoryWindow&) = delete;

    // The bytes of a range of at most 65,535 bytes, until the next call; null when it cannot be read.
    const char* Read(std::uint64_t offset, std::uint32_t size);

private:
    bool Fill(std::uint64_t offset, std::uint64_t size);

    File& file_;
    std::uint64_t fileSize_;
    AString bytes_;
    std::uint64_t start_ = 0;  // of the bytes, in the file
};

const char* ZipDirectoryWindow::Read(std::uint64_t offset, std::uint32_t size) {
    if (offset > fileSize_ || size > fileSize_ - offset) return nullptr;
    if (offset < start_ || offset + size > start_ + bytes_.Length()) {
        // Behind the range there may be bytes that cannot be read and need not be.
        if (!Fill(offset, std::min(kWindowSize, fileSize_ - offset)) && !Fill(offset, size)) return nullptr;
    }
    return bytes_.Data() + (offset - start_);
}

bool ZipDirectoryWindow::Fill(std::uint64_t offset, std::uint64_t size) {
    start_ = offset;
    char* bytes = bytes_.ResizeForOverwrite(static_cast<std::uint32_t>(size));
    if (ReadAt(file_, offset, size, bytes)) return true;
    bytes_.Clear();
    return false;
}

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

ZipStorageVolume::ZipStorageVolume(File* archive, AccessStyle style) : archive_(archive), style_(style) {}

ZipStorageVolume::~ZipStorageVolume() {
    while (ZipFileHeader* member = directoryOrder_.First()) Unlink(*member);
}

// Members without a node are held by nobody else.
void ZipStorageVolume::Link(ZipFileHeader& member) {
    member.AddRef();
    fileOrder_.PushBack(&member);
    directoryOrder_.PushBack(&member);
}

void ZipStorageVolume::Unlink(ZipFileHeader& member) {
    fileOrder_.Remove(&member);
    directoryOrder_.Remove(&member);
    member.Release();
}

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

bool ZipStorageVolume::ReadLocalHeader(const ZipFileHeader& member, ZipLocalHeader& header) const {
    char bytes[kLocalHeaderSize];
    return ReadAt(*archive_, member.localHeaderOffset, kLocalHeaderSize, bytes) && ParseLocalHeader(bytes, header);
}

bool ZipStorageVolume::LocateData(ZipFileHeader& member) {
    ZipLocalHeader header;
    if (!ReadLocalHeader(member, header)) return false;
    if (header.flags != member.flags || (header.flags & kFlagEncrypted) != 0) return false;
    if (header.method != member.method) return false;
    if (header.method != kMethodStored && header.method != kMethodDeflated) return false;
    // A writer that did not know the sizes left them 0 and put them behind the data.
    const bool unknown = member.HasDescriptor();
    if (header.crc32 != (unknown ? 0 : member.crc32)) return false;
    if (header.compressedSize != (unknown ? 0 : member.compressedSize)) return false;
    if (header.uncompressedSize != (unknown ? 0 : member.archivedSize)) return false;

    const std::uint64_t dataOffset = member.localHeaderOffset + header.Size();
    if (dataOffset > kMaxOffset) return false;
    member.dataOffset = static_cast<std::uint32_t>(dataOffset);
    return true;
}

}  // namespace ZEMA
