#include "host/archive/MountedArchive.h"

#include <cerrno>

#include "host/archive/OverlayFile.h"
#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipRecords.h"
#include "storage/zip/ZipStorageFile.h"

namespace ZEMA {

namespace {

// Whether a file is an archive, or was meant to be one: it begins as one, or ends as one.
bool LooksLikeArchive(File& file) {
    char bytes[4];
    if (GetSize(file) < sizeof(bytes) || !ReadAt(file, 0, sizeof(bytes), bytes)) return false;
    const std::uint32_t start = LoadU32(bytes);
    ZipEndRecord endRecord;
    return start == kLocalHeaderSignature || start == kEndRecordSignature || ReadEndRecord(file, endRecord);
}

}  // namespace

Result<MountedArchive::Pointer> MountedArchive::Open(const std::string& path) {
    Result<FileDescriptor> descriptor = OpenRegularFile(path);
    if (!descriptor) return descriptor.Why();
    const std::shared_ptr<MountedArchive> archive(new MountedArchive);
    archive->file_ = std::move(*descriptor);
    fstat(archive->file_.Get(), &archive->status_);
    const RefPointer<OverlayFile> file = New<OverlayFile>(archive->file_.Get(), -1);
    const Failure failure = archive->Mount(*file);
    if (file->Error() != 0) return SystemFailure(file->Error());
    if (failure) return failure;
    return Pointer(archive);
}

Result<MountedArchive::Pointer> MountedArchive::OpenMember(const Pointer& outer, ZipTreeNode& node) {
    const std::shared_ptr<MountedArchive> archive(new MountedArchive);
    archive->outer_ = outer;
    const Result<RefPointer<File>> file = OpenMemberFile(outer->Volume(), node);
    if (!file) return file.Why();
    if (const Failure failure = archive->Mount(**file)) return failure;
    return Pointer(archive);
}

Failure MountedArchive::Mount(File& file) {
    if (!LooksLikeArchive(file)) return {FailureKind::NoArchive, "is no archive"};
    volume_ = New<ZipStorageVolume>(&file, kReadStyle);
    if (volume_->Open()) return {};
    return {FailureKind::Damaged, "the archive is damaged"};
}

bool MountedArchive::IsOf(const struct stat& status) const {
    return !IsMember() && status.st_dev == status_.st_dev && status.st_ino == status_.st_ino;
}

Result<RefPointer<File>> OpenMemberFile(ZipStorageVolume& volume, ZipTreeNode& node) {
    RefPointer<File> file(ZipStorageFile::Open(volume, node, nullptr, kReadStyle, nullptr));
    if (file) return file;
    const ZipFileHeader* const member = node.Header();
    if (member == nullptr || member->elementFlags.IsDirectory()) return Failure{FailureKind::WrongKind, "is a folder"};
    if ((member->flags & kFlagEncrypted) != 0) return Failure{FailureKind::Unsupported, "it is encrypted"};
    if (member->method != kMethodStored && member->method != kMethodDeflated) {
        return Failure{FailureKind::Unsupported, "it is packed by a method that is not supported"};
    }
    return Failure{FailureKind::Damaged, "its records disagree, or it is damaged"};
}

}  // namespace ZEMA
