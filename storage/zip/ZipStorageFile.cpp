#include "storage/zip/ZipStorageFile.h"

#include <algorithm>
#include <memory>

#include "storage/Directory.h"
#include "storage/zip/ZipContents.h"
#include "storage/zip/ZipFileHeader.h"

namespace ZEMA {

namespace {

// Destroys a new object that nobody has taken a reference to yet.
struct DropNew {
    void operator()(Object* object) const { RefPointer<Object> dropped(object); }
};

bool SharingAllows(const ZipFileHeader& member, AccessStyle style, bool archiveIsWritable) {
    if (style.read != 0 && member.denyReadCount != 0) return false;
    if (style.write != 0) {
        if (member.denyWriteCount != 0 || !archiveIsWritable) return false;
        if (!member.elementFlags.Has(ElementFlags::kWritable)) return false;
    }
    if (style.shareRead == 0 && member.readerCount != 0) return false;
    return style.shareWrite != 0 || member.writerCount == 0;
}

// What cannot be true of a member that is not in memory yet fails before anything of its size is allocated, here or by
// whoever asks for its size.
bool ClaimsCanBeTrue(const ZipFileHeader& member, File& archive) {
    if (member.uncompressedSize == 0 || !member.segments.Empty()) return true;
    return ClaimsPlausibleSize(member, GetSize(archive));
}

bool NeedsNoContents(const ZipFileHeader& member, AccessStyle style) {
    return style.write == 0 && member.method == kMethodStored && (member.flags & kFlagEncrypted) == 0;
}

}  // namespace

ZipStorageFile* ZipStorageFile::Open(ZipStorageVolume& volume, ZipTreeNode& node, Directory* parent, AccessStyle style,
                                     const std::uint64_t* truncateTo) {
    ZipFileHeader* member = node.Header();
    if (member == nullptr || member->elementFlags.IsDirectory()) return nullptr;
    if (!SharingAllows(*member, style, volume.IsWritable())) return nullptr;
    if (member->dataOffset == 0 && !volume.LocateData(*member)) return nullptr;

    // From here on a refusal lets go of the file, and the last one forgets what was found out about the data.
    std::unique_ptr<ZipStorageFile, DropNew> file(new ZipStorageFile(volume, node, parent, style));
    if (!ClaimsCanBeTrue(*member, volume.Archive())) return nullptr;
    if (!NeedsNoContents(*member, style) && !LoadContents(volume.Archive(), *member)) return nullptr;
    if (truncateTo != nullptr && !file->SetSize(*truncateTo)) return nullptr;
    return file.release();
}

ZipStorageFile::ZipStorageFile(ZipStorageVolume& volume, ZipTreeNode& node, Directory* parent, AccessStyle style)
    : File(node.Name(), parent), style_(style), volume_(&volume), node_(&node), member_(*node.Header()) {
    ++member_.openCount;
    if (style_.read != 0) ++member_.readerCount;
    if (style_.write != 0) ++member_.writerCount;
    if (style_.shareRead == 0) ++member_.denyReadCount;
    if (style_.shareWrite == 0) ++member_.denyWriteCount;
}

ZipStorageFile::~ZipStorageFile() {
    --member_.openCount;
    if (style_.read != 0) --member_.readerCount;
    if (style_.write != 0) --member_.writerCount;
    if (style_.shareRead == 0) --member_.denyReadCount;
    if (style_.shareWrite == 0) --member_.denyWriteCount;
    if (member_.openCount == 0) member_.ForgetContents();
}

void ZipStorageFile::OnLastRelease() {
    // A member that was left dirty and could not be loaded again has nothing to write.
    const bool hasContents = member_.uncompressedSize == 0 || !member_.segments.Empty();
    if (member_.dirty && member_.openCount == 1 && hasContents) {
        try {
            member_.dirty = style_.write != 0 && !volume_->WriteBack(member_);
        } catch (...) {  // memory ran out: the member stays changed, and nobody can be told
        }
    }
    File::OnLastRelease();
}

bool ZipStorageFile::SetFlags(const ElementFlags* flags) {
    return node_->SetFlags(*flags);
}

ElementFlags ZipStorageFile::GetFlags() {
    return node_->Flags();
}

bool ZipStorageFile::SetTimes(const ElementTimes* times) {
    return node_->SetTimes(*times);
}

ElementTimes ZipStorageFile::GetTimes() {
    return node_->Times();
}

bool ZipStorageFile::ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) {
    if (done != nullptr) *done = 0;
    if (style_.read == 0 || offset > member_.uncompressedSize) return false;
    const std::uint64_t count = std::min(size, member_.uncompressedSize - offset);
    if (!member_.segments.Empty()) {
        CopyFromSegments(member_, offset, count, buffer);
    } else if (count != 0 && !ZEMA::ReadAt(volume_->Archive(), member_.dataOffset + offset, count, buffer)) {
        return false;
    }
    position_ = offset + count;
    if (done != nullptr) *done = count;
    return count == size;
}

bool ZipStorageFile::WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) {
    if (done != nullptr) *done = 0;
    if (style_.write == 0 || offset > member_.uncompressedSize) return false;
    if (size != 0) {
        if (size > kMaxOffset - offset) return false;
        if (offset + size > member_.uncompressedSize && !Grow(offset + size)) return false;
        CopyToSegments(member_, offset, size, buffer);
        member_.dirty = true;
    }
    position_ = offset + size;
    if (done != nullptr) *done = size;
    return true;
}

bool ZipStorageFile::Read(std::uint64_t size, void* buffer, std::uint64_t* done) {
    return ZEMA::ReadAt(*this, position_, size, buffer, done);
}

bool ZipStorageFile::Write(std::uint64_t size, const void* buffer, std::uint64_t* done) {
    return ZEMA::WriteAt(*this, position_, size, buffer, done);
}

std::uint64_t ZipStorageFile::GetSize() {
    return member_.uncompressedSize;
}

bool ZipStorageFile::SetSize(std::uint64_t size) {
    if (style_.write == 0) return false;
    const std::uint32_t oldSize = member_.uncompressedSize;
    if (size == oldSize) return true;
    if (size > oldSize) {
        if (!Grow(size)) return false;
        ZeroSegments(member_, oldSize, size - oldSize);
        return true;
    }
    member_.uncompressedSize = static_cast<std::uint32_t>(size);
    member_.dirty = true;
    DropSegments(member_, member_.uncompressedSize);
    position_ = std::min(position_, size);
    return true;
}

// The new bytes are not defined: they are written, or zeroed, next.
bool ZipStorageFile::Grow(std::uint64_t size) {
    const std::uint64_t end = SegmentsEnd(member_);
    if (size > kMaxOffset) return false;
    if (size > end && !AppendSegments(member_, std::min(size - member_.uncompressedSize, kMaxOffset - end)))
        return false;
    member_.uncompressedSize = static_cast<std::uint32_t>(size);
    member_.dirty = true;
    return true;
}

std::uint64_t ZipStorageFile::GetPosition() {
    return position_;
}

bool ZipStorageFile::Seek(std::uint64_t position) {
    if (position > member_.uncompressedSize) return false;
    position_ = position;
    return true;
}

}  // namespace ZEMA
