// Adding a member to an archive.
#include "storage/zip/ZipMemberNames.h"
#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

namespace {

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

}  // namespace ZEMA
